#include "service/store/Venues.hpp"

namespace KeloService {
namespace {

constexpr const char* venueSelection =
    "SELECT v.venueId, v.name, v.address, v.city, v.state, v.country, v.latitude, v.longitude, "
    "c.categoryId, c.shortName, c.iconPrefix, c.iconSuffix "
    "FROM venues v LEFT JOIN venueCategories c USING (categoryId) ";

std::optional<std::string> optionalText(const Query& query, int column) {
    return query.isNull(column) ? std::nullopt : std::optional(query.text(column));
}

std::optional<Venue> readVenue(Query& query) {
    if (!query.next()) {
        return std::nullopt;
    }
    Venue venue{query.text(0), query.text(1),          optionalText(query, 2),
                query.text(3), optionalText(query, 4), query.text(5),
                query.real(6), query.real(7),          {}};
    if (!query.isNull(8)) {
        venue.category =
            VenueCategory{query.text(8), query.text(9), query.text(10), query.text(11)};
    }
    return venue;
}

} // namespace

std::optional<Venue> Venues::find(const std::string& venueId) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(venueSelection) + "WHERE v.venueId = ?1");
    return readVenue(query.bind(venueId));
}

std::optional<Venue> Venues::ofPost(std::int64_t postId) {
    const auto lock = database_.lock();
    Query query = database_.query(std::string(venueSelection) +
                                  "JOIN postExtras e USING (venueId) WHERE e.postId = ?1");
    return readVenue(query.bind(postId));
}

} // namespace KeloService
