#include "service/routes/Routes.hpp"

#include <charconv>

namespace KeloService {
namespace {

Answer requests(const Call& call, const Context& context) {
    std::uint64_t since = 0;
    if (const auto text = call.request.parameter("since")) {
        const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), since);
        if (error != std::errc() || end != text->data() + text->size()) {
            throw ServiceError(400, ErrorCode::badRequest, "since must be a number");
        }
    }
    return jsonAnswer(context.log.list(since));
}

Answer connections(const Context& context) {
    const ConnectionCounts counts = context.connections();
    return jsonAnswer({{"accepted", counts.accepted},
                       {"secured", counts.secured},
                       {"used", counts.used},
                       {"open", counts.open}});
}

} // namespace

void addInspectionRoutes(Router& router, const Context& context) {
    router.add("GET", "/_service/health", [](const Call&) {
        return jsonAnswer({{"status", "ok"}, {"version", KELO_SERVICE_VERSION}});
    });
    router.add("GET", "/_service/requests",
               [&context](const Call& call) { return requests(call, context); });
    router.add("DELETE", "/_service/requests", [&context](const Call&) {
        context.log.clear();
        return jsonAnswer(Json::object());
    });
    router.add("GET", "/_service/connections",
               [&context](const Call&) { return connections(context); });
}

} // namespace KeloService
