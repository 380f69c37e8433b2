#include "service/store/Loops.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

void Loops::add(std::int64_t userId, const std::vector<LoopReport>& reports) {
    const auto lock = database_.lock();
    database_.transact([&] {
        for (const LoopReport& report : reports) {
            addOne(userId, report);
        }
    });
}

void Loops::addOne(std::int64_t userId, const LoopReport& report) {
    database_
        .query("INSERT INTO loops (userId, postId, count, ts, created) VALUES (?1, ?2, ?3, ?4, ?5)")
        .bind(userId, report.postId, report.count, report.ts, currentMilliseconds())
        .run();
    database_.query("UPDATE posts SET loopCount = loopCount + ?2 WHERE postId = ?1")
        .bind(report.postId, report.count)
        .run();
    database_
        .query("UPDATE users SET loopCount = loopCount + ?2 "
               "WHERE userId = (SELECT userId FROM posts WHERE postId = ?1)")
        .bind(report.postId, report.count)
        .run();
}

} // namespace KeloService
