// expect: no matching|too many arguments
#include <KeloAPI/loops/LongformUploadEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return LongformUploadEndpoint::create(session);
}
#else
auto make() {
    return LongformUploadEndpoint::create();
}
#endif
