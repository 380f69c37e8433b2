#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

Json describe(const Session& session, const Context& context) {
    Json record{{"key", session.key},
                {"userId", session.userId},
                {"username", session.username},
                {"expired", session.expired}};
    if (session.captchaToken) {
        record["captchaUrl"] = captchaUrl(context, *session.captchaToken);
    }
    return record;
}

[[noreturn]] void refuseUnknownSession() {
    throw ServiceError(404, ErrorCode::notFound, "There is no session with this key");
}

Answer listSessions(const Context& context) {
    Json sessions = Json::array();
    for (const Session& session : context.store.sessions.list()) {
        sessions.push_back(describe(session, context));
    }
    return jsonAnswer({{"sessions", sessions}});
}

Answer addSession(const Call& call, const Context& context) {
    const Json body = bodyObject(call);
    const auto user = context.store.users.findByName(requiredText(body, "username"));
    if (!user) {
        throw ServiceError(404, ErrorCode::notFound, "There is no user of this name");
    }
    const auto key = body.contains("key") ? std::optional(requiredText(body, "key")) : std::nullopt;
    const std::string added = context.store.sessions.add(user->userId, key);
    return jsonAnswer(describe(context.store.sessions.find(added).value(), context));
}

Answer expireSession(const Call& call, const Context& context) {
    if (!context.store.sessions.expire(call.argument("key"))) {
        refuseUnknownSession();
    }
    return jsonAnswer(Json::object());
}

Answer demandCaptcha(const Call& call, const Context& context) {
    const auto token = context.store.sessions.demandCaptcha(call.argument("key"));
    if (!token) {
        refuseUnknownSession();
    }
    return jsonAnswer({{"token", *token}, {"url", captchaUrl(context, *token)}});
}

Answer addFaults(const Call& call, const Context& context) {
    const Json script = Json::parse(call.request.body, nullptr, false);
    if (script.is_discarded()) {
        throw ServiceError(400, ErrorCode::badRequest, "The body is no JSON");
    }
    try {
        return jsonAnswer({{"ids", context.faults.add(script)}});
    } catch (const FaultScriptError& error) {
        throw ServiceError(400, ErrorCode::badRequest, error.what());
    }
}

void addSessionControl(Router& router, const Context& context) {
    router.add("GET", "/_service/sessions",
               [&context](const Call&) { return listSessions(context); });
    router.add("POST", "/_service/sessions",
               [&context](const Call& call) { return addSession(call, context); });
    router.add("POST", "/_service/sessions/:key/expire",
               [&context](const Call& call) { return expireSession(call, context); });
    router.add("POST", "/_service/sessions/:key/captcha",
               [&context](const Call& call) { return demandCaptcha(call, context); });
}

void addFaultControl(Router& router, const Context& context) {
    router.add("POST", "/_service/faults",
               [&context](const Call& call) { return addFaults(call, context); });
    router.add("GET", "/_service/faults", [&context](const Call&) {
        return jsonAnswer({{"faults", context.faults.list()}});
    });
    router.add("DELETE", "/_service/faults", [&context](const Call&) {
        context.faults.clear();
        return jsonAnswer(Json::object());
    });
}

Answer describeMediaRate(const Context& context) {
    return jsonAnswer({{"bytesPerSecond", context.mediaRate.bytesPerSecond()}});
}

Answer setMediaRate(const Call& call, const Context& context) {
    const Json body = bodyObject(call);
    const auto rate = body.find("bytesPerSecond");
    if (rate == body.end() || !rate->is_number_integer() || *rate < 0 || *rate > highestMediaRate) {
        throw ServiceError(400, ErrorCode::badRequest,
                           "bytesPerSecond must be an integer from 0 to " +
                               std::to_string(highestMediaRate));
    }
    context.mediaRate.set(rate->get<std::int64_t>());
    return describeMediaRate(context);
}

void addMediaControl(Router& router, const Context& context) {
    router.add("GET", "/_service/media-rate",
               [&context](const Call&) { return describeMediaRate(context); });
    router.add("POST", "/_service/media-rate",
               [&context](const Call& call) { return setMediaRate(call, context); });
}

} // namespace

void addControlRoutes(Router& router, const Context& context) {
    addSessionControl(router, context);
    addFaultControl(router, context);
    addMediaControl(router, context);
}

} // namespace KeloService
