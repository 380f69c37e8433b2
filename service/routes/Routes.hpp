#pragma once

#include "service/http/Router.hpp"
#include "service/routes/Context.hpp"

namespace KeloService {

// One function and one source file per resource. A new one is declared here, and called in
// addAllRoutes.
void addActionRoutes(Router& router, const Context& context);
void addCaptchaRoutes(Router& router, const Context& context);
void addChannelRoutes(Router& router, const Context& context);
void addControlRoutes(Router& router, const Context& context);
void addFeedbackRoutes(Router& router, const Context& context);
void addFollowRoutes(Router& router, const Context& context);
void addInsertRoutes(Router& router, const Context& context);
void addInspectionRoutes(Router& router, const Context& context);
void addLikeRoutes(Router& router, const Context& context);
void addLongformRoutes(Router& router, const Context& context);
void addLoopRoutes(Router& router, const Context& context);
void addMeRoutes(Router& router, const Context& context);
void addMediaRoutes(Router& router, const Context& context);
void addPostRoutes(Router& router, const Context& context);
void addRepostRoutes(Router& router, const Context& context);
void addSessionRoutes(Router& router, const Context& context);
void addSoundboardRoutes(Router& router, const Context& context);
void addTimelineRoutes(Router& router, const Context& context);
void addUploadRoutes(Router& router, const Context& context);
void addVenueRoutes(Router& router, const Context& context);

void addAllRoutes(Router& router, const Context& context);

} // namespace KeloService
