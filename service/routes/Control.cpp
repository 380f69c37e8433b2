#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"
#include "service/seed/Seed.hpp"

namespace KeloService {
namespace {

constexpr double longestProcessing = 86400;

Answer listRequests(const Call& call, const Context& context) {
    const auto since = parseNumber<std::uint64_t>(call.request.parameter("since").value_or("0"));
    if (!since) {
        throw ServiceError(400, "since must be a number");
    }
    return jsonAnswer(context.server.log().list(*since));
}

Answer countConnections(const Call& /*call*/, const Context& context) {
    const ConnectionCounts& counts = context.server.counts();
    return jsonAnswer({{"accepted", counts.accepted.load()},
                       {"secured", counts.secured.load()},
                       {"used", counts.used.load()},
                       {"open", counts.open.load()}});
}

struct ActionKind {
    const char* name;
    const char* sql;
};

/// What users did since the seed (?1) and did not take back, oldest first.
constexpr ActionKind actionKinds[] = {
    {"likes", "SELECT likeId, postId, userId FROM likes WHERE created > ?1 ORDER BY likeId"},
    {"reposts",
     "SELECT repostId, postId, userId FROM reposts WHERE created > ?1 ORDER BY repostId"},
    {"follows", "SELECT userId, followeeId FROM outsideFollows WHERE created > ?1 "
                "ORDER BY created, userId, followeeId"},
    {"feedback", "SELECT userId, kind, targetId, boost FROM feedback WHERE created > ?1 "
                 "ORDER BY feedbackId"},
    {"loops", "SELECT userId, postId, count, ts FROM loops WHERE created > ?1 ORDER BY loopsId"},
    {"views", "SELECT userId, longformId, timestamp FROM views WHERE created > ?1 "
              "ORDER BY viewId"},
};

Answer listActions(const Call& /*call*/, const Context& context) {
    Json actions;
    for (const ActionKind& kind : actionKinds) {
        actions[kind.name] = records(context, kind.sql, seededMoment);
    }
    return jsonAnswer(actions);
}

Answer addFaults(const Call& call, const Context& context) {
    const Json script = Json::parse(call.request.body, nullptr, false);
    if (script.is_discarded()) {
        throw ServiceError(400, "The body is no JSON");
    }
    try {
        return jsonAnswer({{"ids", context.server.faults().add(script)}});
    } catch (const FaultScriptError& error) {
        throw ServiceError(400, error.what());
    }
}

void addRate(Routes& routes, const std::string& path, ByteRate& (Server::*rateOf)()) {
    const auto describe = [rateOf](const Call& /*call*/, const Context& context) {
        return jsonAnswer({{"bytesPerSecond", (context.server.*rateOf)().load()}});
    };
    routes.add("GET", path, describe);
    routes.add("POST", path, [rateOf, describe](const Call& call, const Context& context) {
        const Json rate = bodyObject(call).value("bytesPerSecond", Json());
        if (!rate.is_number_integer() || rate < 0 || rate > highestByteRate) {
            throw ServiceError(400, "bytesPerSecond must be an integer from 0 to " +
                                        std::to_string(highestByteRate));
        }
        (context.server.*rateOf)() = rate.get<std::int64_t>();
        return describe(call, context);
    });
}

Answer describeProcessingTime(const Call& /*call*/, const Context& context) {
    return jsonAnswer({{"seconds", context.uploadTimes.processingSeconds.load()}});
}

Answer setProcessingTime(const Call& call, const Context& context) {
    const Json seconds = bodyObject(call).value("seconds", Json());
    if (!seconds.is_number() || seconds < 0 || seconds > longestProcessing) {
        throw ServiceError(400, "seconds must be a number from 0 to 86400");
    }
    context.uploadTimes.processingSeconds = seconds.get<double>();
    return describeProcessingTime(call, context);
}

} // namespace

void addControlRoutes(Routes& routes) {
    routes.add("GET", "/_service/health", [](const Call&, const Context&) {
        return jsonAnswer({{"status", "ok"}, {"version", KELO_SERVICE_VERSION}});
    });
    routes.add("GET", "/_service/requests", listRequests);
    routes.add("DELETE", "/_service/requests", [](const Call&, const Context& context) {
        context.server.log().clear();
        return jsonAnswer();
    });
    routes.add("GET", "/_service/connections", countConnections);
    routes.add("GET", "/_service/actions", listActions);
    routes.add("POST", "/_service/faults", addFaults);
    routes.add("GET", "/_service/faults", [](const Call&, const Context& context) {
        return jsonAnswer({{"faults", context.server.faults().list()}});
    });
    routes.add("DELETE", "/_service/faults", [](const Call&, const Context& context) {
        context.server.faults().clear();
        return jsonAnswer();
    });
    addRate(routes, "/_service/media-rate", &Server::mediaRate);
    addRate(routes, "/_service/upload-rate", &Server::uploadRate);
    routes.add("GET", "/_service/processing-time", describeProcessingTime);
    routes.add("POST", "/_service/processing-time", setProcessingTime);
}

} // namespace KeloService
