#include "service/store/Likes.hpp"

#include "service/store/Clock.hpp"

namespace KeloService {

std::optional<Like> Likes::find(std::int64_t postId, std::int64_t userId) {
    Query query = database_.query("SELECT likeId, likes.created, userId, username, avatarPath, "
                                  "verified FROM likes JOIN users USING (userId) "
                                  "WHERE postId = ?1 AND userId = ?2");
    if (!query.bind(postId, userId).next()) {
        return std::nullopt;
    }
    return Like{query.integer(0),
                query.integer(1),
                {query.integer(2), query.text(3), query.text(4), query.boolean(5)}};
}

Like Likes::add(std::int64_t postId, std::int64_t userId) {
    const auto lock = database_.lock();
    if (const auto like = find(postId, userId)) {
        return *like;
    }
    database_.transact([&] {
        database_.query("INSERT INTO likes (postId, userId, created) VALUES (?1, ?2, ?3)")
            .bind(postId, userId, currentMilliseconds())
            .run();
        addToCounters(postId, userId, 1);
    });
    return find(postId, userId).value();
}

void Likes::remove(std::int64_t postId, std::int64_t userId) {
    const auto lock = database_.lock();
    if (!find(postId, userId)) {
        return;
    }
    database_.transact([&] {
        database_.query("DELETE FROM likes WHERE postId = ?1 AND userId = ?2")
            .bind(postId, userId)
            .run();
        addToCounters(postId, userId, -1);
    });
}

void Likes::addToCounters(std::int64_t postId, std::int64_t userId, int number) {
    database_.query("UPDATE posts SET likeCount = likeCount + ?2 WHERE postId = ?1")
        .bind(postId, number)
        .run();
    database_.query("UPDATE users SET likeCount = likeCount + ?2 WHERE userId = ?1")
        .bind(userId, number)
        .run();
}

} // namespace KeloService
