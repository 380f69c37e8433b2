#include "service/Clock.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

Answer userAnswer(const Context& context, std::int64_t userId) {
    const std::string sql = std::string(userSelection) + "WHERE userId = ?1";
    return dataAnswer(records(context, sql, userId).at(0));
}

Answer me(const Call& call, const Context& context) {
    return userAnswer(context, requireUser(call, context));
}

Answer showUser(const Call& call, const Context& context) {
    sessionUser(call, context);
    return userAnswer(context, requireExisting(call, context, "user"));
}

Answer findUsers(const Call& call, const Context& context) {
    sessionUser(call, context);
    const auto name = call.request.parameter("username");
    if (!name) {
        throw ServiceError(400, "A username is needed");
    }
    const std::string sql = std::string(userSelection) + "WHERE username = ?1";
    return dataAnswer(wholeList(records(context, sql, *name)));
}

// Following a user's account outside the service is apart from following on the service itself,
// which fills the home feed. Clients take 230 and 231 for success: what they asked for is so.

Answer follow(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::int64_t followeeId = requireExisting(call, context, "user");
    if (context.database.run("INSERT OR IGNORE INTO outsideFollows VALUES (?1, ?2, ?3)", userId,
                             followeeId, currentMilliseconds()) == 0) {
        throw ServiceError(409, "You follow this user already", ErrorCode::alreadyFollowing);
    }
    return dataAnswer();
}

Answer unfollow(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::int64_t followeeId = requireExisting(call, context, "user");
    if (context.database.run("DELETE FROM outsideFollows WHERE userId = ?1 AND followeeId = ?2",
                             userId, followeeId) == 0) {
        throw ServiceError(409, "You do not follow this user", ErrorCode::notFollowing);
    }
    return dataAnswer();
}

} // namespace

void addUserRoutes(Routes& routes) {
    routes.add("GET", "/users", findUsers);
    routes.add("GET", "/users/me", me);
    routes.add("GET", "/users/:id", showUser);
    routes.add("POST", "/users/:id/follow-on-twitter", follow);
    routes.add("POST", "/users/:id/unfollow-on-twitter", unfollow);
}

} // namespace KeloService
