#include "service/store/Longforms.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

std::optional<std::int64_t> Longforms::viewCount(const std::string& longformId) {
    const auto lock = database_.lock();
    Query query = database_.query("SELECT viewCount FROM longforms WHERE longformId = ?1");
    return query.bind(longformId).next() ? std::optional(query.integer(0)) : std::nullopt;
}

void Longforms::addView(std::int64_t userId, const std::string& longformId,
                        const std::string& timestamp) {
    const auto lock = database_.lock();
    database_.transact([&] {
        database_
            .query("INSERT INTO views (userId, longformId, timestamp, created) "
                   "VALUES (?1, ?2, ?3, ?4)")
            .bind(userId, longformId, timestamp, currentMilliseconds())
            .run();
        database_.query("UPDATE longforms SET viewCount = viewCount + 1 WHERE longformId = ?1")
            .bind(longformId)
            .run();
    });
}

} // namespace KeloService
