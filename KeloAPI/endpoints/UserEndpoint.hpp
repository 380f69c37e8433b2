#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>

namespace KeloAPI {

/// `UserEndpoint` brings nothing but the news of its success.
struct UserSuccess {};

using UserResult = Outcome<UserSuccess>; ///< How a call of `UserEndpoint` ended.

/// Acts on one user: POST users/, the user's id and /follow-on-twitter or /unfollow-on-twitter.
class KELO_API UserEndpoint : public Endpoint {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<UserEndpoint> create(std::string userId);
    /// On a session of the caller's choice; a null one stops the process. Without a user's id, the
    /// id is empty.
    static std::shared_ptr<UserEndpoint> create(std::shared_ptr<Session> session,
                                                std::string userId = "");

    /// As given; it goes into the path as it is.
    const std::string& userId() const { return _userId; }

    /// Switches whether the service follows that user's Twitter account. The service's codes 230
    /// and 231 count as success. The completion runs on the main queue.
    void setFollowingOnTwitter(bool following,
                               std::function<void(const UserResult& result)> completion);

protected:
    /// For derived classes, through `make`.
    UserEndpoint(Key key, std::shared_ptr<Session> session, std::string userId);

private:
    const std::string _userId;
};

} // namespace KeloAPI
