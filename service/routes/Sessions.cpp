#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

void addSessionRoutes(Router& router, const Context& context) {
    router.add("POST", "/sessions", [&context](const Call& call) {
        const Json body = bodyObject(call);
        const auto user = context.store.users.findByPassword(requiredText(body, "username"),
                                                             requiredText(body, "password"));
        if (!user) {
            throw ServiceError(401, ErrorCode::wrongCredentials,
                               "The user name or the password is wrong");
        }
        return dataAnswer({{"key", context.store.sessions.add(user->userId)},
                           {"userId", user->userId},
                           {"username", user->username}});
    });
}

} // namespace KeloService
