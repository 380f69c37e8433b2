#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

namespace KeloAPI {

namespace {

/// Codes of the service that say that nothing was left to do.
bool countsAsSuccess(const Error& error) {
    const auto code = error.integer(KLAPIStatusCodeKey);
    return code == 230 || code == 231;
}

} // namespace

UserEndpoint::UserEndpoint(Key key, std::shared_ptr<Session> session, std::string userId)
    : Endpoint(key, std::move(session))
    , _userId(std::move(userId)) {}

std::shared_ptr<UserEndpoint> UserEndpoint::create(std::string userId) {
    return create(Api::session(SessionType::Authenticated), std::move(userId));
}

std::shared_ptr<UserEndpoint> UserEndpoint::create(std::shared_ptr<Session> session,
                                                   std::string userId) {
    return make<UserEndpoint>(std::move(session), std::move(userId));
}

void UserEndpoint::setFollowingOnTwitter(bool following,
                                         std::function<void(const UserResult&)> completion) {
    detail::requireCompletion(completion);
    setPath("users/" + _userId + (following ? "/follow-on-twitter" : "/unfollow-on-twitter"));
    setMethod(Method::POST);
    request(std::make_shared<KLEmptyParser>(),
            detail::errorOnly([completion = std::move(completion)](std::optional<Error> error) {
                if (error && !countsAsSuccess(*error)) {
                    completion(UserResult::Error{*std::move(error)});
                } else {
                    completion(UserSuccess{});
                }
            }));
}

} // namespace KeloAPI
