// expect: protected|private|no matching
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void make(std::shared_ptr<Session> session) {
    TimelineEndpoint endpoint({}, session);
}
#else
auto make(std::shared_ptr<Session> session) {
    return TimelineEndpoint::create(session);
}
#endif
