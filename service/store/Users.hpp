#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

struct User {
    std::int64_t userId = 0;
    std::string username;
    std::string avatarPath;
    std::string description;
    std::string location;
    std::int64_t created = 0;
    bool verified = false;
    bool isPrivate = false;
    std::int64_t loopCount = 0;
    double loopVelocity = 0;
    std::int64_t followerCount = 0;
    std::int64_t followingCount = 0;
    std::int64_t likeCount = 0;
    std::int64_t postCount = 0;
};

/// The service's accounts. Safe to use from any thread.
class Users {
public:
    explicit Users(Database& database)
        : database_(database) {}

    std::optional<User> find(std::int64_t userId);
    std::optional<User> findByName(const std::string& username);
    /// The id of the user whose avatar lies at this path.
    std::optional<std::int64_t> findByAvatar(const std::string& path);
    /// The user whose name and password these are.
    std::optional<User> findByPassword(const std::string& username, const std::string& password);

    /// The users that most others follow.
    std::vector<User> mostFollowed(std::int64_t count);

private:
    Database& database_;
};

} // namespace KeloService
