#include "service/routes/Routes.hpp"

namespace KeloService {

void addAllRoutes(Router& router, const Context& context) {
    addCaptchaRoutes(router, context);
    addControlRoutes(router, context);
    addInspectionRoutes(router, context);
    addMeRoutes(router, context);
    addSessionRoutes(router, context);
    addTimelineRoutes(router, context);
}

} // namespace KeloService
