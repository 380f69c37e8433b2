#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

std::string requiredBoost(const Call& call) {
    std::string boost = requiredText(bodyObject(call), "recommendationBoost");
    if (boost != "positive" && boost != "neutral" && boost != "negative") {
        throw ServiceError(400, ErrorCode::badRequest,
                           "recommendationBoost must be positive, neutral or negative");
    }
    return boost;
}

} // namespace

void addFeedbackRoutes(Router& router, const Context& context) {
    router.add("POST", "/recommendations/feedback/users/:id", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const User user = requireUser(call, context);
        context.store.feedback.add(session.userId, "user", user.userId, requiredBoost(call));
        return dataAnswer(Json::object());
    });
    router.add("POST", "/recommendations/feedback/posts/:id", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const std::int64_t postId = requirePost(call, context);
        context.store.feedback.add(session.userId, "post", postId, requiredBoost(call));
        return dataAnswer(Json::object());
    });
}

} // namespace KeloService
