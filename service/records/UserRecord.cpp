#include "service/records/UserRecord.hpp"

#include "service/DateText.hpp"

namespace KeloService {

Json userRecord(const User& user, const std::string& baseUrl) {
    return {{"userId", user.userId},
            {"username", user.username},
            {"avatarUrl", baseUrl + user.avatarPath},
            {"description", user.description},
            {"location", user.location},
            {"created", dateText(user.created)},
            {"shareUrl", baseUrl + "/u/" + std::to_string(user.userId)},
            {"verified", user.verified},
            {"private", user.isPrivate},
            {"loopCount", user.loopCount},
            {"loopVelocity", user.loopVelocity},
            {"followerCount", user.followerCount},
            {"followingCount", user.followingCount},
            {"postCount", user.postCount},
            {"likeCount", user.likeCount}};
}

void addUserSummary(Json& record, const UserSummary& user, const std::string& baseUrl) {
    record["userId"] = user.userId;
    record["username"] = user.username;
    record["avatarUrl"] = baseUrl + user.avatarPath;
    record["verified"] = user.verified;
}

} // namespace KeloService
