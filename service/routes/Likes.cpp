#include "service/records/PostRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

void addLikeRoutes(Router& router, const Context& context) {
    router.add("POST", "/posts/:id/likes", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const Like like = context.store.likes.add(requirePost(call, context), session.userId);
        return dataAnswer(likeRecord(like, context.baseUrl));
    });
    router.add("DELETE", "/posts/:id/likes", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        context.store.likes.remove(requirePost(call, context), session.userId);
        return dataAnswer(Json::object());
    });
}

} // namespace KeloService
