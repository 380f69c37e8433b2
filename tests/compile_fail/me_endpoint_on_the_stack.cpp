// expect: protected|private|no matching
#include <KeloAPI/endpoints/MeEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void make(std::shared_ptr<Session> session) {
    MeEndpoint endpoint({}, session);
}
#else
auto make(std::shared_ptr<Session> session) {
    return MeEndpoint::create(session);
}
#endif
