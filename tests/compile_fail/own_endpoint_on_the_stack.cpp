// expect: private
#include <KeloAPI/api/Endpoint.hpp>

using namespace KeloAPI;

class Own : public Endpoint {
public:
    Own(Key key, std::shared_ptr<Session> session)
        : Endpoint(key, std::move(session)) {}
};

#ifdef FORBIDDEN
void make(std::shared_ptr<Session> session) {
    Own endpoint({}, session);
}
#else
auto make(std::shared_ptr<Session> session) {
    return Endpoint::make<Own>(session);
}
#endif
