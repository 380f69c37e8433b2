#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::absent;
using testing::fails;
using testing::JsonText;
using testing::KeyTable;

static_assert(!std::is_default_constructible_v<KLVenue>);
static_assert(std::is_constructible_v<KLVenue, const char*, const char*>);
static_assert(!std::is_default_constructible_v<KLVenueCategory>);
static_assert(std::is_constructible_v<KLVenueCategory, const char*, const char*>);

namespace {

using testing::insufficient;

template <class Member>
auto showingVenue(Member member) {
    return testing::showing<KLVenue>(member);
}

std::shared_ptr<KLVenue> foursquare(const std::string& members) {
    return KLFoursquareVenueParser().parse(
        JsonText(R"({"id":"v1","name":"Cafe",)" + members + "}").object());
}

/// What a property of a venue's category shows; nothing where there is no category.
std::function<std::string(const KLVenue&)>
ofCategory(std::function<std::string(const KLVenueCategory&)> property) {
    return [property](const KLVenue& venue) {
        return venue.category ? property(*venue.category) : "no category";
    };
}

using OfVenue = std::function<std::string(const KLVenue&)>;
OfVenue categoryId() {
    return ofCategory(testing::showing<KLVenueCategory>(&KLVenueCategory::categoryId));
}
OfVenue shortName() {
    return ofCategory(testing::showing<KLVenueCategory>(&KLVenueCategory::shortName));
}
OfVenue icon() {
    return ofCategory(testing::showing<KLVenueCategory>(&KLVenueCategory::iconUrl));
}

} // namespace

TEST(VenueTest, StartsWithIdentifierAndNameAlone) {
    const KLVenue venue("v1", "Cafe");
    EXPECT_EQ(venue.foursquareVenueId(), "v1");
    EXPECT_EQ(venue.name(), "Cafe");
    EXPECT_EQ(venue.address, std::nullopt);
    EXPECT_EQ(venue.city, std::nullopt);
    EXPECT_EQ(venue.state, std::nullopt);
    EXPECT_EQ(venue.country, std::nullopt);
    EXPECT_EQ(venue.latitude, 0);
    EXPECT_EQ(venue.longitude, 0);
    EXPECT_EQ(venue.category, nullptr);
}

TEST(VenueCategoryTest, StartsWithIdentifierAndNameAlone) {
    const KLVenueCategory category("c1", "Coffee");
    EXPECT_EQ(category.categoryId(), "c1");
    EXPECT_EQ(category.shortName(), "Coffee");
    EXPECT_EQ(category.iconUrl, std::nullopt);
}

TEST(VenueParserTest, EveryKeyWithEveryKindOfValue) {
    const auto venueTexts = testing::texts();
    const KeyTable<KLVenue>::Rules rules = {
        {"foursquareVenueId", R"("v1")", "v1", showingVenue(&KLVenue::foursquareVenueId),
         venueTexts, fails(insufficient)},
        {"venueName", R"("Cafe")", "Cafe", showingVenue(&KLVenue::name), venueTexts,
         fails(insufficient)},
        {"venueAddress", R"("1 Main St")", "1 Main St", showingVenue(&KLVenue::address), venueTexts,
         absent},
        {"venueCity", R"("Lisbon")", "Lisbon", showingVenue(&KLVenue::city), venueTexts, absent},
        {"venueState", R"("LX")", "LX", showingVenue(&KLVenue::state), venueTexts, absent},
    };
    KeyTable<KLVenue>(testing::parseWith<KLVenueParser>(), rules).check();
}

TEST(VenueParserTest, EveryKeyOfTheCategoryWithEveryKindOfValue) {
    const auto wrap = [](const std::string& other) {
        return [other](const std::string& members) {
            return R"({"foursquareVenueId":"v1","venueName":"Cafe")" + other +
                   (members.empty() ? "" : "," + members) + "}";
        };
    };
    const auto parse = testing::parseWith<KLVenueParser>();
    const KeyTable<KLVenue>::Rules ids = {
        {"venueCategoryId", R"("c1")", "c1", categoryId(), testing::texts(), "no category"}};
    KeyTable<KLVenue>(parse, ids, wrap(R"(,"venueCategoryShortName":"Coffee")")).check();
    const KeyTable<KLVenue>::Rules names = {{"venueCategoryShortName", R"("Coffee")", "Coffee",
                                             shortName(), testing::texts(), "no category"}};
    KeyTable<KLVenue>(parse, names, wrap(R"(,"venueCategoryId":"c1")")).check();
    const KeyTable<KLVenue>::Rules icons = {{"venueCategoryIconUrl", R"("https://i.example/c.png")",
                                             "https://i.example/c.png", icon(), testing::urls(),
                                             absent}};
    KeyTable<KLVenue>(parse, icons,
                      wrap(R"(,"venueCategoryId":"c1","venueCategoryShortName":"Coffee")"))
        .check();
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
    const KeyTable<KLVenue>::Rules rules = {
        {"id", R"("v1")", "v1", showingVenue(&KLVenue::foursquareVenueId), testing::texts(),
         fails(insufficient)},
        {"name", R"("Cafe")", "Cafe", showingVenue(&KLVenue::name), testing::texts(),
         fails(insufficient)},
        {"location", R"({"city":"Lisbon"})", "Lisbon", showingVenue(&KLVenue::city), {}, absent},
        {"categories",
         R"([{"id":"c1","shortName":"Coffee"}])",
         "c1",
         categoryId(),
         {},
         "no category"},
    };
    KeyTable<KLVenue>(testing::parseWith<KLFoursquareVenueParser>(), rules).check();
}

TEST(FoursquareVenueParserTest, EveryKeyOfTheLocationWithEveryKindOfValue) {
    const KeyTable<KLVenue>::Rules rules = {
        {"address", R"("1 Main St")", "1 Main St", showingVenue(&KLVenue::address),
         testing::texts(), absent},
        {"city", R"("Lisbon")", "Lisbon", showingVenue(&KLVenue::city), testing::texts(), absent},
        {"state", R"("LX")", "LX", showingVenue(&KLVenue::state), testing::texts(), absent},
        {"country", R"("PT")", "PT", showingVenue(&KLVenue::country), testing::texts(), absent},
        {"lat", "38.7", "38.7", showingVenue(&KLVenue::latitude), testing::reals(), "0"},
        {"lng", "-9.14", "-9.14", showingVenue(&KLVenue::longitude), testing::reals(), "0"},
    };
    KeyTable<KLVenue>(testing::parseWith<KLFoursquareVenueParser>(), rules,
                      [](const std::string& members) {
                          return R"({"id":"v1","name":"Cafe","location":{)" + members + "}}";
                      })
        .check();
}

TEST(FoursquareVenueParserTest, EveryKeyOfTheCategoryWithEveryKindOfValue) {
    const auto parse = testing::parseWith<KLFoursquareVenueParser>();
    const auto wrap = [](const std::string& other) {
        return [other](const std::string& members) {
            return R"({"id":"v1","name":"Cafe","categories":[{)" + other +
                   (members.empty() ? "" : "," + members) + "}]}";
        };
    };
    const KeyTable<KLVenue>::Rules ids = {
        {"id", R"("c1")", "c1", categoryId(), testing::texts(), "no category"}};
    KeyTable<KLVenue>(parse, ids, wrap(R"("shortName":"Coffee")")).check();
    const KeyTable<KLVenue>::Rules names = {
        {"shortName", R"("Coffee")", "Coffee", shortName(), testing::texts(), "no category"}};
    KeyTable<KLVenue>(parse, names, wrap(R"("id":"c1")")).check();
    const KeyTable<KLVenue>::Rules icons = {
        {"icon", R"({"prefix":"a/","suffix":".png"})", "a/32.png", icon(), {}, absent}};
    KeyTable<KLVenue>(parse, icons, wrap(R"("id":"c1","shortName":"Coffee")")).check();
}

TEST(FoursquareVenueParserTest, BothPartsOfAnIconAreTexts) {
    testing::Reads prefixes;
    testing::Reads suffixes;
    for (const auto& [value, text] : testing::texts()) {
        // A blank makes the whole no URL, and so does a colon where there is no scheme.
        const bool usable = text.find(' ') == std::string::npos && !text.starts_with("2015-");
        prefixes[value] = usable ? text + "32.png" : absent;
        const bool follows = text.find(' ') == std::string::npos;
        suffixes[value] = follows ? "https://i.example/32" + text : absent;
    }
    const auto wrap = [](const std::string& other) {
        return [other](const std::string& members) {
            return R"({"id":"v","name":"n","categories":[{"id":"c","shortName":"s","icon":{)" +
                   other + (members.empty() ? "" : "," + members) + "}}]}";
        };
    };
    const auto parse = testing::parseWith<KLFoursquareVenueParser>();
    const KeyTable<KLVenue>::Rules prefix = {
        {"prefix", R"("P")", "P32.png", icon(), prefixes, absent}};
    KeyTable<KLVenue>(parse, prefix, wrap(R"("suffix":".png")")).check();
    const KeyTable<KLVenue>::Rules suffix = {
        {"suffix", R"(".png")", "https://i.example/32.png", icon(), suffixes, absent}};
    KeyTable<KLVenue>(parse, suffix, wrap(R"("prefix":"https://i.example/")")).check();
}

TEST(FoursquareVenueParserTest, OnlyTheFirstCategoryCounts) {
    EXPECT_EQ(foursquare(R"("categories":[{"id":"c1","shortName":"Coffee"},
                            {"id":"c2","shortName":"Bar"}])")
                  ->category->categoryId(),
              "c1");
    EXPECT_EQ(foursquare(R"("categories":[{"id":"c1"},{"id":"c2","shortName":"Bar"}])")->category,
              nullptr)
        << "an unusable first one has no substitute";
    EXPECT_EQ(foursquare(R"("categories":[{"id":"c1","shortName":"Coffee"},1])")->category, nullptr)
        << "no list of objects";
}

TEST(FoursquareVenueParserTest, ALatitudeThatIsTextIsZero) {
    const auto venue = foursquare(R"("location":{"lat":"38.7","lng":-9.14})");
    EXPECT_EQ(venue->latitude, 0);
    EXPECT_EQ(venue->longitude, -9.14);
}

} // namespace KeloAPI
