// expect: no matching.*LongformViewsEndpoint
#include <KeloAPI/loops/LongformViewsEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return Endpoint::make<LongformViewsEndpoint>(session);
}
#else
auto make() {
    return Endpoint::make<LongformViewsEndpoint>("abc");
}
#endif
