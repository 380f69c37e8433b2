// expect: no matching.*LoopsEndpoint
#include <KeloAPI/loops/LoopsEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return Endpoint::make<LoopsEndpoint>(session);
}
#else
auto make() {
    return Endpoint::make<LoopsEndpoint>();
}
#endif
