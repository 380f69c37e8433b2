#include "service/Clock.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

#include <charconv>
#include <cmath>
#include <vector>

namespace KeloService {
namespace {

// What users report: how they like what is recommended, loops, and views of long-form videos.

/// More than a device can count between two reports, and small enough for sums not to overflow.
constexpr std::int64_t mostLoops = 1000000000;

/// `kind` is "user" or "post".
Answer takeFeedback(const std::string& kind, const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::int64_t targetId = requireExisting(call, context, kind);
    const std::string boost = requiredText(bodyObject(call), "recommendationBoost");
    if (boost != "positive" && boost != "neutral" && boost != "negative") {
        throw ServiceError(400, "recommendationBoost must be positive, neutral or negative");
    }
    context.database.run("INSERT INTO feedback (userId, kind, targetId, boost, created) "
                         "VALUES (?1, ?2, ?3, ?4, ?5)",
                         userId, kind, targetId, boost, currentMilliseconds());
    return dataAnswer();
}

/// The counters of posts and of their authors follow.
void addLoops(const Context& context, std::int64_t userId, const Json& record) {
    if (!record.is_object()) {
        throw ServiceError(400, "Each record of loops must be an object");
    }
    const Json count = record.value("count", Json());
    if (!count.is_number_integer() || count < 0 || count > mostLoops) {
        throw ServiceError(400, "count must be an integer from 0 to " + std::to_string(mostLoops));
    }
    const Json ts = record.value("ts", Json());
    if (!ts.is_number()) {
        throw ServiceError(400, "ts must be a number");
    }
    Database& database = context.database;
    const auto postId = parseNumber<std::int64_t>(requiredText(record, "postId"));
    const auto author = database.number("SELECT userId FROM posts WHERE postId = ?1", postId);
    if (!author) {
        throw ServiceError(404, "There is no such post");
    }
    const auto loops = count.get<std::int64_t>();
    database.run("INSERT INTO loops (userId, postId, count, ts, created) "
                 "VALUES (?1, ?2, ?3, ?4, ?5)",
                 userId, postId, loops, ts.get<double>(), currentMilliseconds());
    database.run("UPDATE posts SET loopCount = loopCount + ?2 WHERE postId = ?1", postId, loops);
    database.run("UPDATE users SET loopCount = loopCount + ?2 WHERE userId = ?1", author, loops);
}

Answer takeLoops(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const Json body = bodyObject(call);
    const auto records = body.find("loops");
    if (records == body.end() || !records->is_array()) {
        throw ServiceError(400, "The body needs a list under loops");
    }
    context.database.transact([&] {
        for (const Json& record : *records) {
            addLoops(context, userId, record);
        }
    });
    return dataAnswer();
}

std::int64_t requireViews(const Call& call, const Context& context) {
    const auto count = context.database.number(
        "SELECT viewCount FROM longforms WHERE longformId = ?1", call.argument("id"));
    if (!count) {
        throw ServiceError(404, "There is no such long-form video");
    }
    return *count;
}

Answer countViews(const Call& call, const Context& context) {
    const std::int64_t count = requireViews(call, context);
    return dataAnswer({{"longformId", call.argument("id")}, {"count", count}});
}

/// Seconds since 1970, as the client wrote them.
std::string requiredTimestamp(const Call& call) {
    std::string text = requiredText(bodyObject(call), "timestamp");
    double seconds = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size() || !(seconds > 0) ||
        !std::isfinite(seconds)) {
        throw ServiceError(400, "timestamp must be seconds since 1970 as a decimal text");
    }
    return text;
}

Answer takeView(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    requireViews(call, context);
    const std::string timestamp = requiredTimestamp(call);
    Database& database = context.database;
    database.transact([&] {
        database.run("INSERT INTO views (userId, longformId, timestamp, created) "
                     "VALUES (?1, ?2, ?3, ?4)",
                     userId, call.argument("id"), timestamp, currentMilliseconds());
        database.run("UPDATE longforms SET viewCount = viewCount + 1 WHERE longformId = ?1",
                     call.argument("id"));
    });
    return dataAnswer();
}

} // namespace

void addReportRoutes(Routes& routes) {
    for (const std::string kind : {"user", "post"}) {
        routes.add("POST", "/recommendations/feedback/" + kind + "s/:id",
                   [kind](const Call& call, const Context& context) {
                       return takeFeedback(kind, call, context);
                   });
    }
    routes.add("POST", "/loops", takeLoops);
    routes.add("GET", "/longforms/:id/views", countViews);
    routes.add("POST", "/longforms/:id/views", takeView);
}

} // namespace KeloService
