#include "service/routes/Routes.hpp"

namespace KeloService {

void Routes::add(const std::string& method, const std::string& pattern, const Handler& handler,
                 Router::Body body) {
    router_.add(
        method, pattern,
        [handler, &context = context_](const Call& call) { return handler(call, context); }, body);
}

void addAllRoutes(Router& router, const Context& context) {
    Routes routes(router, context);
    addCatalogueRoutes(routes);
    addControlRoutes(routes);
    addInsertRoutes(routes);
    addMarkRoutes(routes);
    addMediaRoutes(routes);
    addPostRoutes(routes);
    addReportRoutes(routes);
    addSessionRoutes(routes);
    addTimelineRoutes(routes);
    addUploadRoutes(routes);
    addUserRoutes(routes);
}

} // namespace KeloService
