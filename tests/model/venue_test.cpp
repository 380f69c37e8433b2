#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<KLVenue>);
static_assert(!std::is_default_constructible_v<KLVenueCategory>);
static_assert(std::is_constructible_v<KLVenueCategory, const char*, const char*>);

namespace {

/// What a property of a venue's category shows.
template <class Member>
Property<KLVenue> ofCategory(Member member) {
    return {[member](const KLVenue& venue) {
        return venue.category ? shown(std::invoke(member, *venue.category)) : "no category";
    }};
}
const auto categoryId = &KLVenueCategory::categoryId;
const auto shortName = &KLVenueCategory::shortName;
const auto iconUrl = &KLVenueCategory::iconUrl;

} // namespace

TEST(VenueTest, StartsWithoutCountryAndCoordinates) {
    const KLVenue venue("v1", "Cafe");
    EXPECT_EQ(venue.country, std::nullopt);
    EXPECT_EQ(venue.latitude, 0);
    EXPECT_EQ(venue.longitude, 0);
    EXPECT_EQ(venue.category, nullptr);
}

TEST(VenueParserTest, EveryKeyWithEveryKindOfValue) {
    using V = KLVenue;
    checkParser<KLVenueParser>({
        {"foursquareVenueId", R"("v")", "v", &V::foursquareVenueId, texts(), fails(insufficient)},
        {"venueName", R"("Cafe")", "Cafe", &V::name, texts(), fails(insufficient)},
        {"venueAddress", R"("1 Main St")", "1 Main St", &V::address, texts(), absent},
        {"venueCity", R"("Lisbon")", "Lisbon", &V::city, texts(), absent},
        {"venueState", R"("LX")", "LX", &V::state, texts(), absent},
    });
}

TEST(VenueParserTest, EveryKeyOfTheCategoryWithEveryKindOfValue) {
    const std::string venue = R"({"foursquareVenueId":"v1","venueName":"Cafe")";
    const std::string id = R"(,"venueCategoryId":"c1")";
    const std::string name = R"(,"venueCategoryShortName":"Coffee")";
    checkParser<KLVenueParser>(
        {{"venueCategoryId", R"("c1")", "c1", ofCategory(categoryId), texts(), "no category"}},
        venue + name);
    checkParser<KLVenueParser>({{"venueCategoryShortName", R"("Coffee")", "Coffee",
                                 ofCategory(shortName), texts(), "no category"}},
                               venue + id);
    checkParser<KLVenueParser>(
        {{"venueCategoryIconUrl", R"("c.png")", "c.png", ofCategory(iconUrl), urls(), absent}},
        venue + id + name);
}

TEST(VenueParserTest, NeverTellsOfACountryOrCoordinates) {
    const auto venue = KLVenueParser().parse(
        JsonText(R"({"foursquareVenueId":"v1","venueName":"Cafe","country":"PT","lat":1,"lng":2,
            "venueCountry":"PT","venueLatitude":1,"latitude":1,"longitude":2,
            "location":{"country":"PT","lat":1,"lng":2,"city":"Lisbon"}})")
            .object());
    EXPECT_EQ(venue->country, std::nullopt);
    EXPECT_EQ(venue->latitude, 0);
    EXPECT_EQ(venue->longitude, 0);
    EXPECT_EQ(venue->city, std::nullopt);
}

TEST(FoursquareVenueParserTest, EveryKeyWithEveryKindOfValue) {
    using V = KLVenue;
    // Only the first category counts, and only in a list of objects.
    const Reads categories = {
        {R"([{"id":"c1","shortName":"Coffee"},{"id":"c2","shortName":"Bar"}])", "c1"},
        {R"([{"id":"c1"},{"id":"c2","shortName":"Bar"}])", "no category"},
        {R"([{"id":"c1","shortName":"Coffee"},1])", "no category"}};
    checkParser<KLFoursquareVenueParser>({
        {"id", R"("v1")", "v1", &V::foursquareVenueId, texts(), fails(insufficient)},
        {"name", R"("Cafe")", "Cafe", &V::name, texts(), fails(insufficient)},
        {"location", R"({"city":"Lisbon"})", "Lisbon", &V::city, {}, absent},
        {"categories", R"([{"id":"c1","shortName":"Coffee"}])", "c1", ofCategory(categoryId),
         categories, "no category"},
    });
}

TEST(FoursquareVenueParserTest, EveryKeyOfTheLocationWithEveryKindOfValue) {
    using V = KLVenue;
    checkParser<KLFoursquareVenueParser>(
        {
            {"address", R"("1 Main St")", "1 Main St", &V::address, texts(), absent},
            {"city", R"("Lisbon")", "Lisbon", &V::city, texts(), absent},
            {"state", R"("LX")", "LX", &V::state, texts(), absent},
            {"country", R"("PT")", "PT", &V::country, texts(), absent},
            {"lat", "38.7", "38.7", &V::latitude, reals(), "0"},
            {"lng", "-9.14", "-9.14", &V::longitude, reals(), "0"},
        },
        R"({"id":"v1","name":"Cafe","location":{)", "}}");
}

TEST(FoursquareVenueParserTest, EveryKeyOfTheCategoryWithEveryKindOfValue) {
    const std::string before = R"({"id":"v1","name":"Cafe","categories":[{)";
    const std::string after = "}]}";
    checkParser<KLFoursquareVenueParser>(
        {{"id", R"("c1")", "c1", ofCategory(categoryId), texts(), "no category"}},
        before + R"("shortName":"Coffee")", after);
    checkParser<KLFoursquareVenueParser>(
        {{"shortName", R"("Coffee")", "Coffee", ofCategory(shortName), texts(), "no category"}},
        before + R"("id":"c1")", after);
    checkParser<KLFoursquareVenueParser>({{"icon",
                                           R"({"prefix":"a/","suffix":".png"})",
                                           "a/32.png",
                                           ofCategory(iconUrl),
                                           {},
                                           absent}},
                                         before + R"("id":"c1","shortName":"Coffee")", after);
}

TEST(FoursquareVenueParserTest, BothPartsOfAnIconAreTexts) {
    Reads prefixes;
    Reads suffixes;
    for (const auto& [value, text] : texts()) {
        // A blank makes the whole no URL, and so does a colon where there is no scheme.
        const bool usable = text.find(' ') == std::string::npos && !text.starts_with("2015-");
        prefixes[value] = usable ? text + "32.png" : absent;
        const bool follows = text.find(' ') == std::string::npos;
        suffixes[value] = follows ? "https://i.example/32" + text : absent;
    }
    const std::string before =
        R"({"id":"v","name":"n","categories":[{"id":"c","shortName":"s","icon":{)";
    const std::string after = "}}]}";
    checkParser<KLFoursquareVenueParser>(
        {{"prefix", R"("P")", "P32.png", ofCategory(iconUrl), prefixes, absent}},
        before + R"("suffix":".png")", after);
    checkParser<KLFoursquareVenueParser>({{"suffix", R"(".png")", "https://i.example/32.png",
                                           ofCategory(iconUrl), suffixes, absent}},
                                         before + R"("prefix":"https://i.example/")", after);
}

} // namespace KeloAPI::testing
