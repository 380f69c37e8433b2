// expect: no matching.*FileEndpoint
#include <KeloAPI/files/FileEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return Endpoint::make<FileEndpoint>(session);
}
#else
auto make(const std::shared_ptr<FileManager>& manager) {
    return Endpoint::make<FileEndpoint>("https://media.example/a.mp4", manager);
}
#endif
