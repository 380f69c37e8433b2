#include "service/store/ClosedInserts.hpp"

namespace KeloService {

bool ClosedInserts::contains(std::int64_t userId, const std::string& reference) {
    const auto lock = database_.lock();
    return database_.query("SELECT 1 FROM closedInserts WHERE userId = ?1 AND reference = ?2")
        .bind(userId, reference)
        .next();
}

void ClosedInserts::add(std::int64_t userId, const std::string& reference) {
    const auto lock = database_.lock();
    database_.query("INSERT OR IGNORE INTO closedInserts VALUES (?1, ?2)")
        .bind(userId, reference)
        .run();
}

} // namespace KeloService
