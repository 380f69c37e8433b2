#pragma once

#include "service/http/Router.hpp"
#include "service/routes/Context.hpp"

#include <functional>
#include <string>

namespace KeloService {

/// Adds routes that all work with one context.
class Routes {
public:
    using Handler = std::function<Answer(const Call&, const Context&)>;

    /// Both must outlive the routes.
    Routes(Router& router, const Context& context)
        : router_(router)
        , context_(context) {}

    void add(const std::string& method, const std::string& pattern, const Handler& handler,
             Router::Body body = Router::Body::Held);

private:
    Router& router_;
    const Context& context_;
};

// One function and one source file per family of routes. A new one is declared here, and called in
// addAllRoutes.
void addCatalogueRoutes(Routes& routes);
void addControlRoutes(Routes& routes);
void addInsertRoutes(Routes& routes);
void addMarkRoutes(Routes& routes);
void addMediaRoutes(Routes& routes);
void addPostRoutes(Routes& routes);
void addReportRoutes(Routes& routes);
void addSessionRoutes(Routes& routes);
void addTimelineRoutes(Routes& routes);
void addUploadRoutes(Routes& routes);
void addUserRoutes(Routes& routes);

void addAllRoutes(Router& router, const Context& context);

} // namespace KeloService
