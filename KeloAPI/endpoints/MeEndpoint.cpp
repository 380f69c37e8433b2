#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloAPI {

MeEndpoint::MeEndpoint(Key key, std::shared_ptr<Session> session)
    : Endpoint(key, std::move(session)) {
    setPath("users/me");
}

std::shared_ptr<MeEndpoint> MeEndpoint::create() {
    return create(Api::session(SessionType::Authenticated));
}

std::shared_ptr<MeEndpoint> MeEndpoint::create(std::shared_ptr<Session> session) {
    return make<MeEndpoint>(std::move(session));
}

void MeEndpoint::get(std::function<void(const MeResult&)> completion) {
    detail::requireCompletion(completion);
    request(std::make_shared<UserParser>(),
            detail::firstItem([completion = std::move(completion)](
                                  std::shared_ptr<KLWatchUser> user, std::optional<Error> error) {
                if (error) {
                    completion(MeResult::Error{*std::move(error)});
                    return;
                }
                require(user != nullptr, "users/me returned no user");
                completion(MeSuccess{std::move(user)});
            }));
}

} // namespace KeloAPI
