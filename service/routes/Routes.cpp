#include "service/routes/Routes.hpp"

namespace KeloService {

void addAllRoutes(Router& router, const Context& context) {
    addActionRoutes(router, context);
    addCaptchaRoutes(router, context);
    addChannelRoutes(router, context);
    addControlRoutes(router, context);
    addFeedbackRoutes(router, context);
    addFollowRoutes(router, context);
    addInsertRoutes(router, context);
    addInspectionRoutes(router, context);
    addLikeRoutes(router, context);
    addLongformRoutes(router, context);
    addLoopRoutes(router, context);
    addMeRoutes(router, context);
    addMediaRoutes(router, context);
    addPostRoutes(router, context);
    addRepostRoutes(router, context);
    addSessionRoutes(router, context);
    addSoundboardRoutes(router, context);
    addTimelineRoutes(router, context);
    addUploadRoutes(router, context);
    addVenueRoutes(router, context);
}

} // namespace KeloService
