#include "service/records/UserRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

void addMeRoutes(Router& router, const Context& context) {
    router.add("GET", "/users/me", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        return dataAnswer(
            userRecord(context.store.users.find(session.userId).value(), context.baseUrl));
    });
}

} // namespace KeloService
