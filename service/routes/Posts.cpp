#include "service/records/PostRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Pages.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

void addPostRoutes(Router& router, const Context& context) {
    router.add("GET", "/posts/:id", [&context](const Call& call) {
        const PostView view = readView(call.request, presentedSession(call, context));
        return dataAnswer(postRecord(
            context.store.posts.find({requirePost(call, context)}, view).at(0), context.baseUrl));
    });
}

} // namespace KeloService
