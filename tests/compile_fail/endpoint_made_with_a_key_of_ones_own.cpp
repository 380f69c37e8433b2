// expect: protected
#include <KeloAPI/endpoints/MeEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(std::shared_ptr<Session> session) {
    return Endpoint::make<MeEndpoint>(Endpoint::Key(), session);
}
#else
auto make(std::shared_ptr<Session> session) {
    return Endpoint::make<MeEndpoint>(session);
}
#endif
