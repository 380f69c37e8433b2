#include "service/store/TwitterFollows.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

bool TwitterFollows::exists(std::int64_t userId, std::int64_t followeeId) {
    return database_.query("SELECT 1 FROM twitterFollows WHERE userId = ?1 AND followeeId = ?2")
        .bind(userId, followeeId)
        .next();
}

bool TwitterFollows::add(std::int64_t userId, std::int64_t followeeId) {
    const auto lock = database_.lock();
    if (exists(userId, followeeId)) {
        return false;
    }
    database_.query("INSERT INTO twitterFollows VALUES (?1, ?2, ?3)")
        .bind(userId, followeeId, currentMilliseconds())
        .run();
    return true;
}

bool TwitterFollows::remove(std::int64_t userId, std::int64_t followeeId) {
    const auto lock = database_.lock();
    if (!exists(userId, followeeId)) {
        return false;
    }
    database_.query("DELETE FROM twitterFollows WHERE userId = ?1 AND followeeId = ?2")
        .bind(userId, followeeId)
        .run();
    return true;
}

} // namespace KeloService
