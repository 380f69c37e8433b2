#include "service/store/Reposts.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

std::optional<Repost> Reposts::find(std::int64_t postId, std::int64_t userId) {
    Query query = database_.query("SELECT repostId, reposts.created, userId, username, "
                                  "avatarPath, verified FROM reposts JOIN users USING (userId) "
                                  "WHERE postId = ?1 AND userId = ?2");
    if (!query.bind(postId, userId).next()) {
        return std::nullopt;
    }
    return Repost{query.integer(0),
                  query.integer(1),
                  {query.integer(2), query.text(3), query.text(4), query.boolean(5)}};
}

Repost Reposts::add(std::int64_t postId, std::int64_t userId) {
    const auto lock = database_.lock();
    if (const auto repost = find(postId, userId)) {
        return *repost;
    }
    database_.transact([&] {
        database_.query("INSERT INTO reposts (postId, userId, created) VALUES (?1, ?2, ?3)")
            .bind(postId, userId, currentMilliseconds())
            .run();
        addToCounter(postId, 1);
    });
    return find(postId, userId).value();
}

bool Reposts::remove(std::int64_t postId, std::int64_t userId, std::int64_t repostId) {
    const auto lock = database_.lock();
    const auto repost = find(postId, userId);
    if (!repost || repost->repostId != repostId) {
        return false;
    }
    database_.transact([&] {
        database_.query("DELETE FROM reposts WHERE repostId = ?1").bind(repostId).run();
        addToCounter(postId, -1);
    });
    return true;
}

void Reposts::addToCounter(std::int64_t postId, int number) {
    database_.query("UPDATE posts SET repostCount = repostCount + ?2 WHERE postId = ?1")
        .bind(postId, number)
        .run();
}

} // namespace KeloService
