#include "service/routes/Guard.hpp"

namespace KeloService {

std::optional<std::int64_t> sessionUser(const Call& call, const Context& context) {
    const auto key = call.request.header("kelo-session-id");
    if (!key) {
        return std::nullopt;
    }
    Query session = context.database.query(
        "SELECT userId, expired, captchaToken FROM sessions WHERE key = ?1", *key);
    if (!session.next()) {
        throw ServiceError(401, "This session is not known", ErrorCode::sessionRequired);
    }
    if (session.integer(1) != 0) {
        throw ServiceError(401, "Your session has expired, please sign in again",
                           ErrorCode::sessionExpired);
    }
    if (!session.isNull(2)) {
        throw ServiceError(403, "Please show that you are human", ErrorCode::captchaRequired,
                           context.baseUrl + "/captcha/" + session.text(2));
    }
    return session.integer(0);
}

std::int64_t requireUser(const Call& call, const Context& context) {
    const auto user = sessionUser(call, context);
    if (!user) {
        throw ServiceError(401, "Please sign in", ErrorCode::sessionRequired);
    }
    return *user;
}

std::int64_t requireExisting(const Call& call, const Context& context, const std::string& kind) {
    const std::int64_t id = call.identifier("id");
    if (!context.database.number("SELECT 1 FROM " + kind + "s WHERE " + kind + "Id = ?1", id)) {
        throw ServiceError(404, "There is no such " + kind);
    }
    return id;
}

Json bodyObject(const Call& call) {
    Json body = Json::parse(call.request.body, nullptr, false);
    if (!body.is_object()) {
        throw ServiceError(400, "The body must be a JSON object");
    }
    return body;
}

std::string requiredText(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
        throw ServiceError(400, std::string("The body needs a text under ") + key);
    }
    return found->get<std::string>();
}

std::int64_t readInteger(const Call& call, const char* name, std::int64_t otherwise) {
    const auto text = call.request.parameter(name);
    if (!text) {
        return otherwise;
    }
    const auto value = parseNumber<std::int64_t>(*text);
    if (!value) {
        throw ServiceError(400, std::string(name) + " must be an integer");
    }
    return *value;
}

} // namespace KeloService
