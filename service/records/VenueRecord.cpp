#include "service/records/VenueRecord.hpp"

namespace KeloService {
namespace {

void addPresent(Json& record, const char* key, const std::optional<std::string>& value) {
    if (value) {
        record[key] = *value;
    }
}

Json categoryRecord(const VenueCategory& category, const std::string& baseUrl) {
    return {{"id", category.categoryId},
            {"shortName", category.shortName},
            {"primary", true},
            {"icon", {{"prefix", baseUrl + category.iconPrefix}, {"suffix", category.iconSuffix}}}};
}

} // namespace

void addVenue(Json& record, const Venue& venue, const std::string& baseUrl) {
    record["foursquareVenueId"] = venue.venueId;
    record["venueName"] = venue.name;
    addPresent(record, "venueAddress", venue.address);
    record["venueCity"] = venue.city;
    addPresent(record, "venueState", venue.state);
    if (const auto& category = venue.category) {
        record["venueCategoryId"] = category->categoryId;
        record["venueCategoryShortName"] = category->shortName;
        record["venueCategoryIconUrl"] =
            baseUrl + category->iconPrefix + "32" + category->iconSuffix;
    }
}

Json foursquareRecord(const Venue& venue, const std::string& baseUrl) {
    Json location{{"city", venue.city}, {"lat", venue.latitude}, {"lng", venue.longitude}};
    addPresent(location, "address", venue.address);
    addPresent(location, "state", venue.state);
    if (!venue.country.empty()) {
        location["country"] = venue.country;
    }
    Json categories = Json::array();
    if (venue.category) {
        categories.push_back(categoryRecord(*venue.category, baseUrl));
    }
    return {{"id", venue.venueId},
            {"name", venue.name},
            {"location", location},
            {"categories", categories}};
}

} // namespace KeloService
