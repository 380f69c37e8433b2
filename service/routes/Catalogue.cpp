#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

/// In the nested form of the Foursquare venue service.
Answer venue(const Call& call, const Context& context) {
    const std::string& venueId = call.argument("id");
    Json venues = records(context, R"sql(
SELECT venueId AS id, name, city AS "location.city", latitude AS "location.lat",
    longitude AS "location.lng", address AS "location.address", state AS "location.state",
    nullif(country, '') AS "location.country"
FROM venues WHERE venueId = ?1)sql",
                          venueId);
    if (venues.empty()) {
        throw ServiceError(404, "There is no such venue");
    }
    venues[0]["categories"] = records(context, R"sql(
SELECT categoryId AS id, categoryName AS shortName, 1 AS "primary?",
    '/media/icons/category-' || categoryId || '_' AS "icon.prefix/", '.png' AS "icon.suffix"
FROM venues WHERE venueId = ?1 AND categoryId IS NOT NULL)sql",
                                      venueId);
    return dataAnswer(venues[0]);
}

Answer soundboard(const Call& /*call*/, const Context& context) {
    return dataAnswer(wholeList(records(context, R"sql(
SELECT soundId, name, path AS "soundUrl/", featured AS "featured?", sourcePostId
FROM sounds ORDER BY soundId)sql")));
}

} // namespace

void addCatalogueRoutes(Routes& routes) {
    routes.add("GET", "/venues/:id", venue);
    routes.add("GET", "/soundboard", soundboard);
}

} // namespace KeloService
