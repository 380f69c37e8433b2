// expect: protected|private
#include <KeloAPI/api/Endpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void make(std::shared_ptr<Session> session) {
    Endpoint endpoint({}, session);
}
#else
auto make(std::shared_ptr<Session> session) {
    return Endpoint::create(session);
}
#endif
