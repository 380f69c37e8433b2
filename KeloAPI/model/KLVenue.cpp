#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

namespace {

/// A category of two values; null unless both are text.
std::shared_ptr<KLVenueCategory> categoryOf(const JsonValue& id, const JsonValue& shortName) {
    auto idText = textOf(id);
    auto nameText = textOf(shortName);
    if (!idText || !nameText) {
        return nullptr;
    }
    return std::make_shared<KLVenueCategory>(*std::move(idText), *std::move(nameText));
}

/// The URL of an icon that is given in two parts, with its size between them.
std::optional<URL> iconOf(const JsonObject& icon) {
    const auto [prefix, suffix] = icon.values("prefix", "suffix");
    const auto before = prefix.text();
    const auto behind = suffix.text();
    if (!before || !behind) {
        return std::nullopt;
    }
    return URL::parse(std::string(*before).append("32").append(*behind));
}

std::shared_ptr<KLVenueCategory> categoryOfServiceForm(const JsonObject& json) {
    const auto [id, shortName, iconUrl] =
        json.values("venueCategoryId", "venueCategoryShortName", "venueCategoryIconUrl");
    auto category = categoryOf(id, shortName);
    if (category) {
        category->iconUrl = urlOf(iconUrl);
    }
    return category;
}

std::shared_ptr<KLVenueCategory> categoryOfFoursquareForm(const JsonObject& json) {
    const auto [id, shortName, icon] = json.values("id", "shortName", "icon");
    auto category = categoryOf(id, shortName);
    if (const auto parts = icon.object(); category && parts) {
        category->iconUrl = iconOf(*parts);
    }
    return category;
}

void setLocation(KLVenue& venue, const JsonObject& location) {
    const auto [address, city, state, country, lat, lng] =
        location.values("address", "city", "state", "country", "lat", "lng");
    venue.address = textOf(address);
    venue.city = textOf(city);
    venue.state = textOf(state);
    venue.country = textOf(country);
    venue.latitude = lat.real().value_or(0);
    venue.longitude = lng.real().value_or(0);
}

} // namespace

void KLVenue::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText(foursquareVenueId, "foursquareVenueId");
    coder.encodeText(name, "name");
    coder.encodeText(address, "address");
    coder.encodeText(city, "city");
    coder.encodeText(state, "state");
    coder.encodeText(country, "country");
    coder.encodeDouble(latitude, "latitude");
    coder.encodeDouble(longitude, "longitude");
    coder.encodeObject(category, "category");
}

std::shared_ptr<KLVenue> KLVenue::initWithCoder(KeyedUnarchiver& coder) {
    auto venue = std::make_shared<KLVenue>(coder.decodeText("foursquareVenueId").value_or(""),
                                           coder.decodeText("name").value_or(""));
    venue->address = coder.decodeText("address");
    venue->city = coder.decodeText("city");
    venue->state = coder.decodeText("state");
    venue->country = coder.decodeText("country");
    venue->latitude = coder.decodeDouble("latitude");
    venue->longitude = coder.decodeDouble("longitude");
    venue->category = coder.decodeObject<KLVenueCategory>("category");
    return venue;
}

std::shared_ptr<KLVenue> KLVenueParser::parse(const JsonObject& json) const {
    const auto [id, name, address, city, state] =
        json.values("foursquareVenueId", "venueName", "venueAddress", "venueCity", "venueState");
    auto venue = std::make_shared<KLVenue>(required(textOf(id), "foursquareVenueId"),
                                           required(textOf(name), "venueName"));
    venue->address = textOf(address);
    venue->city = textOf(city);
    venue->state = textOf(state);
    venue->category = categoryOfServiceForm(json);
    return venue;
}

std::shared_ptr<KLVenue> KLFoursquareVenueParser::parse(const JsonObject& json) const {
    const auto [id, name, location, categories] =
        json.values("id", "name", "location", "categories");
    auto venue =
        std::make_shared<KLVenue>(required(textOf(id), "id"), required(textOf(name), "name"));
    if (const auto place = location.object()) {
        setLocation(*venue, *place);
    }
    if (const auto list = categories.objects(); list && !list->empty()) {
        venue->category = categoryOfFoursquareForm(*list->begin());
    }
    return venue;
}

} // namespace KeloAPI
