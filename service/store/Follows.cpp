#include "service/store/Follows.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

bool Follows::exists(std::int64_t userId, std::int64_t followeeId) {
    return database_.query("SELECT 1 FROM outsideFollows WHERE userId = ?1 AND followeeId = ?2")
        .bind(userId, followeeId)
        .next();
}

bool Follows::add(std::int64_t userId, std::int64_t followeeId) {
    const auto lock = database_.lock();
    if (exists(userId, followeeId)) {
        return false;
    }
    database_.query("INSERT INTO outsideFollows VALUES (?1, ?2, ?3)")
        .bind(userId, followeeId, currentMilliseconds())
        .run();
    return true;
}

bool Follows::remove(std::int64_t userId, std::int64_t followeeId) {
    const auto lock = database_.lock();
    if (!exists(userId, followeeId)) {
        return false;
    }
    database_.query("DELETE FROM outsideFollows WHERE userId = ?1 AND followeeId = ?2")
        .bind(userId, followeeId)
        .run();
    return true;
}

} // namespace KeloService
