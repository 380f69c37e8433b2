#include "service/store/Feedback.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

void Feedback::add(std::int64_t userId, const std::string& kind, std::int64_t targetId,
                   const std::string& boost) {
    const auto lock = database_.lock();
    database_
        .query("INSERT INTO feedback (userId, kind, targetId, boost, created) "
               "VALUES (?1, ?2, ?3, ?4, ?5)")
        .bind(userId, kind, targetId, boost, currentMilliseconds())
        .run();
}

} // namespace KeloService
