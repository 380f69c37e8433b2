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

Answer describeRate(const SendRate& rate) {
    return jsonAnswer({{"bytesPerSecond", rate.bytesPerSecond()}});
}

Answer setRate(const Call& call, SendRate& rate) {
    const Json body = bodyObject(call);
    const auto given = body.find("bytesPerSecond");
    if (given == body.end() || !given->is_number_integer() || *given < 0 ||
        *given > highestMediaRate) {
        throw ServiceError(400, ErrorCode::badRequest,
                           "bytesPerSecond must be an integer from 0 to " +
                               std::to_string(highestMediaRate));
    }
    rate.set(*given);
    return describeRate(rate);
}

void addRateControl(Router& router, const std::string& path, SendRate& rate) {
    router.add("GET", path, [&rate](const Call&) { return describeRate(rate); });
    router.add("POST", path, [&rate](const Call& call) { return setRate(call, rate); });
}

Answer setProcessingTime(const Call& call, const Context& context) {
    constexpr double longest = 86400;
    const Json body = bodyObject(call);
    const auto seconds = body.find("seconds");
    if (seconds == body.end() || !seconds->is_number() || *seconds < 0 || *seconds > longest) {
        throw ServiceError(400, ErrorCode::badRequest, "seconds must be a number from 0 to 86400");
    }
    context.uploads.processingSeconds = seconds->get<double>();
    return jsonAnswer({{"seconds", context.uploads.processingSeconds.load()}});
}

Answer listUploads(const Context& context) {
    Json uploads = Json::array();
    for (const Upload& upload : context.store.uploads.list()) {
        Json segments = Json::array();
        for (const UploadSegment& segment : context.store.uploads.segments(upload.mediaId)) {
            segments.push_back({{"index", segment.index}, {"bytes", segment.file.bytes}});
        }
        uploads.push_back({{"mediaId", upload.mediaId},
                           {"userId", upload.userId},
                           {"totalBytes", upload.totalBytes},
                           {"finalized", upload.finalized.has_value()},
                           {"segments", segments}});
    }
    return jsonAnswer({{"uploads", uploads}});
}

Answer expireUpload(const Call& call, const Context& context) {
    if (!context.store.uploads.expire(call.argument("id"))) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such upload");
    }
    return jsonAnswer(Json::object());
}

void addUploadControl(Router& router, const Context& context) {
    router.add("GET", "/_service/uploads",
               [&context](const Call&) { return listUploads(context); });
    router.add("POST", "/_service/uploads/:id/expire",
               [&context](const Call& call) { return expireUpload(call, context); });
    router.add("GET", "/_service/processing-time", [&context](const Call&) {
        return jsonAnswer({{"seconds", context.uploads.processingSeconds.load()}});
    });
    router.add("POST", "/_service/processing-time",
               [&context](const Call& call) { return setProcessingTime(call, context); });
}

} // namespace

void addControlRoutes(Router& router, const Context& context) {
    addSessionControl(router, context);
    addFaultControl(router, context);
    addRateControl(router, "/_service/media-rate", context.mediaRate);
    addRateControl(router, "/_service/upload-rate", context.uploadRate);
    addUploadControl(router, context);
}

} // namespace KeloService
