#include "support/TestService.hpp"

#include <algorithm>
#include <set>

namespace KeloServiceTest {
namespace {

/// What posts carry beside their texts, and the routes that serve it.
class ExtrasTest : public ServiceTest {
protected:
    int status(const std::string& path) { return get(path)->status; }
    /// GET of an address under the service's own.
    httplib::Result file(const std::string& url) {
        EXPECT_TRUE(url.starts_with(service.url() + "/")) << url;
        return client.Get(url.substr(service.url().size()));
    }
    Json everything() { return records("/timelines/all?size=1000"); }
    httplib::Result close(const std::string& reference, const std::string& key) {
        return client.Post("/inserts/" + reference + "/close", {{sessionHeader, key}}, "",
                           "application/json");
    }
    static std::string mara() { return std::string(KeloService::developmentSessionKey); }
    std::vector<std::string> references(const std::string& feed, const std::string& key) {
        std::vector<std::string> found;
        const Json answer = Json::parse(get("/inserts/" + feed, key)->body);
        for (const Json& record : answer.at("data").at("records")) {
            found.push_back(record.at("reference"));
        }
        return found;
    }
};

std::size_t codePoints(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

TEST_F(ExtrasTest, PostsNameTheirChannel) {
    int without = 0;
    for (const Json& record : everything()) {
        EXPECT_EQ(record.contains("channelId"), record.contains("channel"));
        without += record.contains("channel") ? 0 : 1;
    }
    EXPECT_GT(without, 50);
    for (const Json& record : records("/timelines/channels/3")) {
        EXPECT_EQ(record.at("channel"), "Animals");
    }
}

TEST_F(ExtrasTest, TagsSayHowManyPostsHaveThem) {
    const Json page = data("/timelines/tags/cats?size=1");
    for (const Json& tag : page.at("records").at(0).at("tags")) {
        EXPECT_GT(tag.at("postCount"), 0);
        if (tag.at("tag") == "cats") {
            EXPECT_EQ(tag.at("postCount"), page.at("count"));
        }
    }
}

TEST_F(ExtrasTest, SomePostsHaveAVenueInTheFlatForm) {
    int venues = 0;
    int withoutCategory = 0;
    std::set<std::string> icons;
    for (const Json& record : everything()) {
        EXPECT_EQ(record.contains("foursquareVenueId"), record.contains("venueName"));
        for (const char* key : {"country", "lat", "lng", "location", "categories"}) {
            EXPECT_FALSE(record.contains(key)) << key;
        }
        if (!record.contains("venueName")) {
            continue;
        }
        ++venues;
        EXPECT_TRUE(record.at("venueCity").is_string());
        if (record.contains("venueCategoryId")) {
            icons.insert(record.at("venueCategoryIconUrl").get<std::string>());
        } else {
            ++withoutCategory;
        }
    }
    EXPECT_GT(venues, 200);
    EXPECT_LT(venues, 500);
    EXPECT_GT(withoutCategory, 10);
    EXPECT_GE(icons.size(), 4U);
    for (const std::string& icon : icons) {
        EXPECT_EQ(file(icon)->status, 200) << icon;
    }
}

TEST_F(ExtrasTest, AVenueOfItsOwnIsInTheNestedForm) {
    const Json venue = data("/venues/50a1f0c2e4b0000000000005");
    EXPECT_EQ(venue.at("id"), "50a1f0c2e4b0000000000005");
    EXPECT_EQ(venue.at("name"), "Bahnhof Chur");
    const Json location = venue.at("location");
    EXPECT_EQ(location.at("address"), "Bahnhofplatz 1");
    EXPECT_EQ(location.at("city"), "Chur");
    EXPECT_EQ(location.at("state"), "GR");
    EXPECT_EQ(location.at("country"), "Switzerland");
    EXPECT_EQ(location.at("lat"), 46.8533);
    EXPECT_EQ(location.at("lng"), 9.5288);
    const Json category = venue.at("categories").at(0);
    EXPECT_EQ(category.at("shortName"), "Train station");
    EXPECT_EQ(file(category.at("icon").at("prefix").get<std::string>() + "32" +
                   category.at("icon").at("suffix").get<std::string>())
                  ->status,
              200);
    const Json sofa = data("/venues/50a1f0c2e4b0000000000009");
    EXPECT_TRUE(sofa.at("categories").empty());
    EXPECT_FALSE(sofa.at("location").contains("address"));
    EXPECT_EQ(status("/venues/50a1f0c2e4b00000000000ff"), 404);
}

TEST_F(ExtrasTest, SomePostsHaveABylineWhoseEntityPointsAtItsWords) {
    int bylines = 0;
    int linked = 0;
    for (const Json& record : everything()) {
        if (!record.contains("byline")) {
            continue;
        }
        ++bylines;
        const Json& byline = record.at("byline");
        const auto body = byline.at("body").get<std::string>();
        EXPECT_FALSE(body.empty());
        for (const Json& entity : byline.at("entities")) {
            ++linked;
            // The words stand at the body's end.
            const auto title = entity.at("title").get<std::string>();
            EXPECT_TRUE(body.ends_with(title)) << body;
            EXPECT_EQ(entity.at("range").at(1), codePoints(body));
            EXPECT_EQ(entity.at("range").at(0), codePoints(body) - codePoints(title));
            EXPECT_TRUE(entity.at("link").get<std::string>().starts_with("kelo://"));
        }
        EXPECT_EQ(file(byline.at("iconUrl"))->status, 200);
    }
    EXPECT_GT(bylines, 80);
    EXPECT_GT(linked, 50);
    EXPECT_LT(linked, bylines);
}

TEST_F(ExtrasTest, SomePostsHaveMusic) {
    int sold = 0;
    int unsold = 0;
    for (const Json& record : everything()) {
        if (!record.contains("audio")) {
            continue;
        }
        const Json& audio = record.at("audio");
        EXPECT_TRUE(audio.at("trackId").is_number_integer());
        const Json& track = audio.at("track");
        EXPECT_TRUE(track.at("trackName").is_string());
        EXPECT_TRUE(track.at("artistName").is_string());
        EXPECT_TRUE(track.at("hasAudioTrackTimeline").is_boolean());
        EXPECT_EQ(track.contains("itunesId"), track.contains("albumArtUrl"));
        if (track.contains("itunesId")) {
            ++sold;
            EXPECT_EQ(file(track.at("albumArtUrl"))->status, 200);
        } else {
            ++unsold;
        }
    }
    EXPECT_GT(sold, 100);
    EXPECT_GT(unsold, 50);
}

TEST_F(ExtrasTest, IconsThatNothingNamesDoNotExist) {
    for (const char* path : {"/media/icons/x.png", "/media/icons/byline-pick.jpg",
                             "/media/albums/1.png", "/media/albums/", "/media/icons"}) {
        EXPECT_EQ(client.Get(path)->status, 404) << path;
    }
}

TEST_F(ExtrasTest, AChannelCarriesTheFirstPageOfItsTimeline) {
    const Json channel = data("/channels/3?size=7");
    EXPECT_EQ(channel.at("channelId"), 3);
    EXPECT_EQ(channel.at("channel"), "Animals");
    EXPECT_FALSE(channel.contains("records"));
    Json page = data("/timelines/channels/3?size=7");
    EXPECT_EQ(channel.at("timeline"), page);
    EXPECT_EQ(page.at("records").size(), 7U);
    EXPECT_EQ(channel.at("timeline").at("channel").at("channelId"), 3);
    // Its anchor goes on in the channel's timeline.
    const auto anchor = channel.at("timeline").at("anchor").get<std::string>();
    EXPECT_EQ(records("/timelines/channels/3?size=7&anchor=" + anchor).size(), 7U);
    for (const char* path : {"/channels/99", "/channels/x", "/channels/0"}) {
        EXPECT_EQ(status(path), 404) << path;
    }
    EXPECT_EQ(get("/channels/3", "")->status, 200);
    EXPECT_EQ(get("/channels/3", "unknown")->status, 401);
}

TEST_F(ExtrasTest, FeedsHaveInserts) {
    const Json home = records("/inserts/home");
    ASSERT_EQ(home.size(), 2U);
    EXPECT_EQ(home.at(0).at("type"), "userMosaic");
    EXPECT_EQ(home.at(0).at("users").at("records").size(), 6U);
    EXPECT_EQ(home.at(1).at("type"), "urlAction");
    for (const char* key : {"reference", "title", "actionTitle", "actionLink"}) {
        EXPECT_TRUE(home.at(1).at(key).is_string()) << key;
    }
    EXPECT_EQ(file(home.at(1).at("backgroundImage"))->status, 200);
    const Json popular = records("/inserts/popular");
    ASSERT_EQ(popular.size(), 2U);
    EXPECT_EQ(popular.at(0).at("type"), "postsMosaic");
    EXPECT_EQ(popular.at(0).at("posts").at("records"), records("/timelines/editors-picks?size=6"));
    EXPECT_EQ(popular.at(0).at("closeable"), false);
    EXPECT_FALSE(popular.at(0).contains("closeUrlPath"));
    EXPECT_EQ(popular.at(1).at("type"), "solicitation");
    EXPECT_EQ(popular.at(1).at("closeUrlPath"), "inserts/rate-the-app/close");
    EXPECT_TRUE(records("/inserts/empty").empty());
}

TEST_F(ExtrasTest, AClosedInsertStaysClosedForItsUser) {
    const std::vector<std::string> both = {"people-to-follow", "longform-launch"};
    EXPECT_EQ(references("home", mara()), both);
    EXPECT_EQ(close("longform-launch", mara())->status, 200);
    EXPECT_EQ(close("longform-launch", mara())->status, 200);
    EXPECT_EQ(references("home", mara()), std::vector<std::string>{"people-to-follow"});
    EXPECT_EQ(references("home", ""), both);
    const auto other =
        control("POST", "/_service/sessions", {{"username", "kofi"}}).at("key").get<std::string>();
    EXPECT_EQ(references("home", other), both);
    EXPECT_EQ(close("no-such-card", mara())->status, 404);
    EXPECT_EQ(close("longform-launch", "unknown")->status, 401);
}

TEST_F(ExtrasTest, ACardThatCannotBeClosedStays) {
    EXPECT_EQ(close("editors-picks", mara())->status, 404);
    EXPECT_EQ(references("popular", mara()),
              (std::vector<std::string>{"editors-picks", "rate-the-app"}));
}

} // namespace
} // namespace KeloServiceTest
