#include "service/records/PostRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

void addRepostRoutes(Router& router, const Context& context) {
    router.add("POST", "/posts/:id/repost", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const Repost repost = context.store.reposts.add(requirePost(call, context), session.userId);
        return dataAnswer(repostRecord(repost, context.baseUrl));
    });
    router.add("DELETE", "/posts/:id/repost/:repostId", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        if (!context.store.reposts.remove(requirePost(call, context), session.userId,
                                          call.identifier("repostId"))) {
            throw ServiceError(404, ErrorCode::notFound, "There is no such repost of yours");
        }
        return dataAnswer(Json::object());
    });
}

} // namespace KeloService
