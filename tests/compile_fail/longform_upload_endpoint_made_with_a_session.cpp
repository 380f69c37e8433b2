// expect: no matching.*LongformUploadEndpoint
#include <KeloAPI/loops/LongformUploadEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return Endpoint::make<LongformUploadEndpoint>(session);
}
#else
auto make() {
    return Endpoint::make<LongformUploadEndpoint>();
}
#endif
