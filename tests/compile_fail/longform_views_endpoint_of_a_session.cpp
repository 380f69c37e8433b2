// expect: cannot convert|no viable conversion
#include <KeloAPI/loops/LongformViewsEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return LongformViewsEndpoint::create(session);
}
#else
auto make() {
    return LongformViewsEndpoint::create("abc");
}
#endif
