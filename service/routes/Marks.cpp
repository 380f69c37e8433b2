#include "service/Clock.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

// Likes and reposts are kept alike. `noun` is the name of one of them.

void addToCounters(Database& database, const std::string& noun, std::int64_t postId,
                   std::int64_t userId, int number) {
    const std::string increase = " SET " + noun + "Count = " + noun + "Count + ?2 WHERE ";
    database.run("UPDATE posts" + increase + "postId = ?1", postId, number);
    if (noun == "like") {
        database.run("UPDATE users" + increase + "userId = ?1", userId, number);
    }
}

/// A user's like or repost of a post; empty when there is none.
Json findMark(const Context& context, const std::string& noun, std::int64_t postId,
              std::int64_t userId) {
    return records(context, markSelection(noun) + "AND m.userId = ?2", postId, userId);
}

/// What is there already stays the same.
Answer addMark(const std::string& noun, const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::int64_t postId = requireExisting(call, context, "post");
    context.database.transact([&] {
        if (findMark(context, noun, postId, userId).empty()) {
            context.database.run("INSERT INTO " + noun +
                                     "s (postId, userId, created) VALUES (?1, ?2, ?3)",
                                 postId, userId, currentMilliseconds());
            addToCounters(context.database, noun, postId, userId, 1);
        }
    });
    return dataAnswer(findMark(context, noun, postId, userId).at(0));
}

/// Whether there was one; one with this id, where it is given.
bool removeMark(const Context& context, const std::string& noun, std::int64_t postId,
                std::int64_t userId, std::optional<std::int64_t> id = std::nullopt) {
    bool removed = false;
    context.database.transact([&] {
        removed = context.database.run("DELETE FROM " + noun +
                                           "s WHERE postId = ?1 AND userId = ?2 AND " + noun +
                                           "Id = coalesce(?3, " + noun + "Id)",
                                       postId, userId, id) != 0;
        if (removed) {
            addToCounters(context.database, noun, postId, userId, -1);
        }
    });
    return removed;
}

Answer like(const Call& call, const Context& context) {
    return addMark("like", call, context);
}

Answer unlike(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    removeMark(context, "like", requireExisting(call, context, "post"), userId);
    return dataAnswer();
}

Answer repost(const Call& call, const Context& context) {
    return addMark("repost", call, context);
}

Answer undoRepost(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::int64_t postId = requireExisting(call, context, "post");
    if (!removeMark(context, "repost", postId, userId, call.identifier("repostId"))) {
        throw ServiceError(404, "There is no such repost of yours");
    }
    return dataAnswer();
}

} // namespace

void addMarkRoutes(Routes& routes) {
    routes.add("POST", "/posts/:id/likes", like);
    routes.add("DELETE", "/posts/:id/likes", unlike);
    routes.add("POST", "/posts/:id/repost", repost);
    routes.add("DELETE", "/posts/:id/repost/:repostId", undoRepost);
}

} // namespace KeloService
