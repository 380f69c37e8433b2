#include "service/store/Users.hpp"

#include "service/store/Password.hpp"

namespace KeloService {
namespace {

constexpr const char* userSelection =
    "SELECT userId, username, avatarPath, description, location, created, verified, private, "
    "loopCount, loopVelocity, followerCount, followingCount, likeCount, "
    "(SELECT count(*) FROM posts WHERE posts.userId = users.userId), passwordSalt, passwordHash "
    "FROM users ";

User readUser(const Query& query) {
    User user;
    user.userId = query.integer(0);
    user.username = query.text(1);
    user.avatarPath = query.text(2);
    user.description = query.text(3);
    user.location = query.text(4);
    user.created = query.integer(5);
    user.verified = query.boolean(6);
    user.isPrivate = query.boolean(7);
    user.loopCount = query.integer(8);
    user.loopVelocity = query.real(9);
    user.followerCount = query.integer(10);
    user.followingCount = query.integer(11);
    user.likeCount = query.integer(12);
    user.postCount = query.integer(13);
    return user;
}

} // namespace

std::optional<User> Users::find(std::int64_t userId) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(userSelection) + "WHERE userId = ?1");
    return query.bind(userId).next() ? std::optional(readUser(query)) : std::nullopt;
}

std::optional<User> Users::findByName(const std::string& username) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(userSelection) + "WHERE username = ?1");
    return query.bind(username).next() ? std::optional(readUser(query)) : std::nullopt;
}

std::optional<std::int64_t> Users::findByAvatar(const std::string& path) {
    const auto lock = database_.lock();
    Query query = database_.query("SELECT userId FROM users WHERE avatarPath = ?1");
    return query.bind(path).next() ? std::optional(query.integer(0)) : std::nullopt;
}

std::optional<User> Users::findByPassword(const std::string& username,
                                          const std::string& password) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(userSelection) + "WHERE username = ?1");
    if (!query.bind(username).next() || hashPassword(password, query.text(14)) != query.text(15)) {
        return std::nullopt;
    }
    return readUser(query);
}

std::vector<User> Users::mostFollowed(std::int64_t count) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(userSelection) +
                                  "ORDER BY followerCount DESC, userId LIMIT ?1");
    query.bind(count);
    std::vector<User> users;
    while (query.next()) {
        users.push_back(readUser(query));
    }
    return users;
}

} // namespace KeloService
