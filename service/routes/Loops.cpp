#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

#include <charconv>
#include <vector>

namespace KeloService {
namespace {

/// More than a device can count between two reports, and small enough for sums not to overflow.
constexpr std::int64_t mostLoops = 1000000000;

[[noreturn]] void refuse(const std::string& what) {
    throw ServiceError(400, ErrorCode::badRequest, what);
}

std::int64_t postIdOf(const std::string& text, const Context& context) {
    std::int64_t postId = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), postId);
    if (error != std::errc() || end != text.data() + text.size() ||
        !context.store.posts.exists(postId)) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such post");
    }
    return postId;
}

LoopReport readReport(const Json& record, const Context& context) {
    if (!record.is_object()) {
        refuse("Each record of loops must be an object");
    }
    const auto count = record.find("count");
    if (count == record.end() || !count->is_number_integer() || *count < 0 || *count > mostLoops) {
        refuse("count must be an integer from 0 to " + std::to_string(mostLoops));
    }
    const auto ts = record.find("ts");
    if (ts == record.end() || !ts->is_number()) {
        refuse("ts must be a number");
    }
    return {postIdOf(requiredText(record, "postId"), context), count->get<std::int64_t>(),
            ts->get<double>()};
}

Answer addLoops(const Call& call, const Context& context) {
    const Session session = requireSession(call, context);
    const Json body = bodyObject(call);
    const auto records = body.find("loops");
    if (records == body.end() || !records->is_array()) {
        refuse("The body needs a list under loops");
    }
    std::vector<LoopReport> reports;
    for (const Json& record : *records) {
        reports.push_back(readReport(record, context));
    }
    context.store.loops.add(session.userId, reports);
    return dataAnswer(Json::object());
}

} // namespace

void addLoopRoutes(Router& router, const Context& context) {
    router.add("POST", "/loops", [&context](const Call& call) { return addLoops(call, context); });
}

} // namespace KeloService
