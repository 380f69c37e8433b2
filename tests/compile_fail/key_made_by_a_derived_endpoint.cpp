// expect: private
#include <KeloAPI/api/Endpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
class Own : public Endpoint {
public:
    explicit Own(std::shared_ptr<Session> session)
        : Endpoint(Key(), std::move(session)) {}
};
void make(std::shared_ptr<Session> session) {
    Own endpoint(session);
}
#else
class Own : public Endpoint {
public:
    Own(Key key, std::shared_ptr<Session> session)
        : Endpoint(key, std::move(session)) {}
};
auto make(std::shared_ptr<Session> session) {
    return Endpoint::make<Own>(session);
}
#endif
