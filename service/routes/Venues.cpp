#include "service/records/VenueRecord.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {

void addVenueRoutes(Router& router, const Context& context) {
    router.add("GET", "/venues/:id", [&context](const Call& call) {
        const auto venue = context.store.venues.find(call.argument("id"));
        if (!venue) {
            throw ServiceError(404, ErrorCode::notFound, "There is no such venue");
        }
        return dataAnswer(foursquareRecord(*venue, context.baseUrl));
    });
}

} // namespace KeloService
