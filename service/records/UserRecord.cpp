#include "service/records/UserRecord.hpp"

#include <cstdio>
#include <ctime>

namespace KeloService {

std::string dateText(std::int64_t milliseconds) {
    const std::time_t seconds = milliseconds / 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    char text[48];
    std::snprintf(text, sizeof text, "%s.%03d000", date, static_cast<int>(milliseconds % 1000));
    return text;
}

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
