#include "service/routes/Guard.hpp"

namespace KeloService {

Json bodyObject(const Call& call) {
    Json body = Json::parse(call.request.body, nullptr, false);
    if (!body.is_object()) {
        throw ServiceError(400, ErrorCode::badRequest, "The body must be a JSON object");
    }
    return body;
}

std::string requiredText(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
        throw ServiceError(400, ErrorCode::badRequest,
                           std::string("The body needs a text under ") + key);
    }
    return found->get<std::string>();
}

std::int64_t requirePost(const Call& call, const Context& context) {
    const std::int64_t postId = call.identifier("id");
    if (!context.store.posts.exists(postId)) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such post");
    }
    return postId;
}

User requireUser(const Call& call, const Context& context) {
    const auto user = context.store.users.find(call.identifier("id"));
    if (!user) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such user");
    }
    return *user;
}

std::string captchaUrl(const Context& context, const std::string& token) {
    return context.baseUrl + "/captcha/" + token;
}

std::optional<Session> presentedSession(const Call& call, const Context& context) {
    const auto key = call.request.header("kelo-session-id");
    if (!key) {
        return std::nullopt;
    }
    auto session = context.store.sessions.find(*key);
    if (!session) {
        throw ServiceError(401, ErrorCode::sessionRequired, "This session is not known");
    }
    if (session->expired) {
        throw ServiceError(401, ErrorCode::sessionExpired,
                           "Your session has expired, please sign in again");
    }
    if (session->captchaToken) {
        throw ServiceError(403, ErrorCode::captchaRequired, "Please show that you are human",
                           captchaUrl(context, *session->captchaToken));
    }
    return session;
}

Session requireSession(const Call& call, const Context& context) {
    auto session = presentedSession(call, context);
    if (!session) {
        throw ServiceError(401, ErrorCode::sessionRequired, "Please sign in");
    }
    return *session;
}

} // namespace KeloService
