// Endpoints whose `create` takes no session cannot be made with one past it either. Only `make`
// reaches their constructors, so no expression can ask for this without being refused.
//
// expect: no matching.*[^A-Za-z]FileEndpoint
// expect: no matching.*[^A-Za-z]LongformUploadEndpoint
// expect: no matching.*[^A-Za-z]LongformViewsEndpoint
// expect: no matching.*[^A-Za-z]LoopsEndpoint
// expect: no matching.*[^A-Za-z]RecommendationsEndpoint
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void make(const std::shared_ptr<Session>& session) {
    Endpoint::make<FileEndpoint>(session);
    Endpoint::make<LongformUploadEndpoint>(session);
    Endpoint::make<LongformViewsEndpoint>(session);
    Endpoint::make<LoopsEndpoint>(session);
    Endpoint::make<RecommendationsEndpoint>(session);
}
#else
void make(const std::shared_ptr<FileManager>& manager) {
    Endpoint::make<FileEndpoint>("https://media.example/a.mp4", manager);
    Endpoint::make<LongformUploadEndpoint>();
    Endpoint::make<LongformViewsEndpoint>("abc");
    Endpoint::make<LoopsEndpoint>();
    Endpoint::make<RecommendationsEndpoint>();
}
#endif
