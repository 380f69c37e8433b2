// expect: no matching|too many arguments
#include <KeloAPI/loops/LoopsEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return LoopsEndpoint::create(session);
}
#else
auto make() {
    return LoopsEndpoint::create();
}
#endif
