#include "service/routes/Guard.hpp"
#include "service/routes/Routes.hpp"

#include <charconv>
#include <cmath>

namespace KeloService {
namespace {

/// The video that the path names, with its views.
std::pair<std::string, std::int64_t> requireLongform(const Call& call, const Context& context) {
    const std::string& longformId = call.argument("id");
    const auto count = context.store.longforms.viewCount(longformId);
    if (!count) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such long-form video");
    }
    return {longformId, *count};
}

std::string requiredTimestamp(const Call& call) {
    std::string text = requiredText(bodyObject(call), "timestamp");
    double seconds = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size() || !(seconds > 0) ||
        !std::isfinite(seconds)) {
        throw ServiceError(400, ErrorCode::badRequest,
                           "timestamp must be seconds since 1970 as a decimal text");
    }
    return text;
}

} // namespace

void addLongformRoutes(Router& router, const Context& context) {
    router.add("GET", "/longforms/:id/views", [&context](const Call& call) {
        const auto [longformId, count] = requireLongform(call, context);
        return dataAnswer({{"longformId", longformId}, {"count", count}});
    });
    router.add("POST", "/longforms/:id/views", [&context](const Call& call) {
        const Session session = requireSession(call, context);
        const std::string longformId = requireLongform(call, context).first;
        context.store.longforms.addView(session.userId, longformId, requiredTimestamp(call));
        return dataAnswer(Json::object());
    });
}

} // namespace KeloService
