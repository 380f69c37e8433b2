// expect: no matching.*RecommendationsEndpoint
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return Endpoint::make<RecommendationsEndpoint>(session);
}
#else
auto make() {
    return Endpoint::make<RecommendationsEndpoint>();
}
#endif
