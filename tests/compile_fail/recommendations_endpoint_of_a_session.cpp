// expect: no matching|too many arguments
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return RecommendationsEndpoint::create(session);
}
#else
auto make() {
    return RecommendationsEndpoint::create();
}
#endif
