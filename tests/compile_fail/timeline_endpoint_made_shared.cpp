// expect: protected|private|no matching
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
auto make(const std::shared_ptr<Session>& session) {
    return std::make_shared<TimelineEndpoint>(session);
}
#else
auto make(const std::shared_ptr<Session>& session) {
    return TimelineEndpoint::create(session);
}
#endif
