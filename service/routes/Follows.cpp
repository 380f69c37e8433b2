#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

// Clients take 230 and 231 for success: what they asked for is so.
void addFollowRoutes(Router& router, const Context& context) {
    router.add("POST", "/users/:id/follow-on-twitter", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const User user = requireUser(call, context);
        if (!context.store.follows.add(session.userId, user.userId)) {
            throw ServiceError(409, ErrorCode::alreadyFollowing, "You follow this user already");
        }
        return dataAnswer(Json::object());
    });
    router.add("POST", "/users/:id/unfollow-on-twitter", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const User user = requireUser(call, context);
        if (!context.store.follows.remove(session.userId, user.userId)) {
            throw ServiceError(409, ErrorCode::notFollowing, "You do not follow this user");
        }
        return dataAnswer(Json::object());
    });
}

} // namespace KeloService
