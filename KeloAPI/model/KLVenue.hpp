#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

class KLVenueCategory;

/// The place at which a post was made. One thread at a time.
class KELO_API KLVenue final : public Archivable {
public:
    /// All else is absent. The parsers below name the wire keys.
    KLVenue(std::string identifier, std::string title)
        : foursquareVenueId(std::move(identifier))
        , name(std::move(title)) {}

    /// The venue's own identity.
    const std::string foursquareVenueId;
    const std::string name; ///< As the service sends it.

    std::optional<std::string> address; ///< Absent where not known.
    std::optional<std::string> city;    ///< Absent where not known.
    std::optional<std::string> state;   ///< Absent where not known.
    std::optional<std::string> country; ///< Absent where not known.
    /// In degrees; 0 where they are not known.
    double latitude = 0;
    double longitude = 0; ///< In degrees, likewise.
    /// Null where it is not known.
    std::shared_ptr<KLVenueCategory> category;

    static constexpr std::string_view archivedClassName = "KLVenue"; ///< Its name in an archive.
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Missing texts that every venue has become empty ones, missing coordinates 0.
    static std::shared_ptr<KLVenue> initWithCoder(KeyedUnarchiver& coder);
};

/// The service's own, flat form. Needs "foursquareVenueId" and "venueName" as texts
/// (`InsufficientData`); reads "venueAddress", "venueCity" and "venueState", and a category of
/// "venueCategoryId", "venueCategoryShortName" (texts both, or there is none) and
/// "venueCategoryIconUrl". It has neither country nor coordinates.
class KELO_API KLVenueParser final : public JsonParser<KLVenue> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLVenue> parse(const JsonObject& json) const override;
};

/// The form of the Foursquare venue service. Needs "id" and "name" as texts (`InsufficientData`);
/// reads address, city, state, country, "lat" and "lng" of the object "location", and a category of
/// the first object of "categories": "id" and "shortName" (texts both, or there is none) and the
/// "prefix" and "suffix" of its "icon", whose URL is that of 32 pixels.
class KELO_API KLFoursquareVenueParser final : public JsonParser<KLVenue> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLVenue> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
