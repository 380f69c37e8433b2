#include "support/TestService.hpp"

#include <map>
#include <set>
#include <tuple>
#include <vector>

namespace KeloServiceTest {
namespace {

/// What posts carry beside their texts, and the routes that serve it.
class ExtrasTest : public ServiceTest {
protected:
    /// Status of what is served at an address of the service's own.
    int served(const Json& url) { return client.Get(pathOf(url))->status; }
    Reply close(const std::string& reference, const std::string& key = developmentKey) {
        return send("POST", "/inserts/" + reference + "/close", "", key);
    }
    std::vector<std::string> references(const std::string& feed,
                                        const std::string& key = developmentKey) {
        std::vector<std::string> found;
        const Json answer = send("GET", "/inserts/" + feed, "", key).data();
        for (const Json& record : answer.at("records")) {
            found.push_back(record.at("reference"));
        }
        return found;
    }
};

TEST_F(ExtrasTest, TagsSayHowManyPostsHaveThem) {
    const Json page = data("/timelines/tags/cats?size=1");
    bool found = false;
    for (const Json& tag : page.at("records").at(0).at("tags")) {
        EXPECT_GT(tag.at("postCount"), 0);
        found = found || (tag.at("tag") == "cats" && tag.at("postCount") == page.at("count"));
    }
    EXPECT_TRUE(found);
}

TEST_F(ExtrasTest, SomePostsHaveMore) {
    std::map<std::string, int> counts;
    std::set<std::string> images;
    for (const Json& record : manyPosts()) {
        for (const char* key : {"channel", "venueName", "venueCategoryId", "byline", "audio"}) {
            counts[key] += record.contains(key) ? 1 : 0;
        }
        EXPECT_EQ(record.contains("channelId"), record.contains("channel"));
        EXPECT_EQ(record.contains("foursquareVenueId"), record.contains("venueName"));
        EXPECT_EQ(record.contains("venueCity"), record.contains("venueName"));
        for (const char* key : {"country", "lat", "lng", "location", "categories"}) {
            EXPECT_FALSE(record.contains(key)) << key;
        }
        if (record.contains("venueCategoryId")) {
            images.insert(pathOf(record.at("venueCategoryIconUrl")));
        }
        if (record.contains("byline")) {
            images.insert(pathOf(record.at("byline").at("iconUrl")));
        }
        if (record.contains("audio")) {
            const Json& track = record.at("audio").at("track");
            EXPECT_TRUE(record.at("audio").at("trackId").is_number_integer());
            EXPECT_TRUE(track.at("hasAudioTrackTimeline").is_boolean());
            EXPECT_EQ(track.contains("itunesId"), track.contains("albumArtUrl"));
            counts["sold"] += track.contains("itunesId") ? 1 : 0;
            if (track.contains("albumArtUrl")) {
                images.insert(pathOf(track.at("albumArtUrl")));
            }
        }
    }
    const std::tuple<const char*, int, int> expected[] = {
        {"channel", 500, 950}, {"venueName", 200, 500}, {"venueCategoryId", 190, 490},
        {"byline", 80, 500},   {"audio", 150, 500},     {"sold", 100, 400},
    };
    for (const auto& [key, least, most] : expected) {
        EXPECT_GT(counts[key], least) << key;
        EXPECT_LT(counts[key], most) << key;
    }
    EXPECT_LT(counts["venueCategoryId"] + 10, counts["venueName"]);
    EXPECT_LT(counts["sold"] + 50, counts["audio"]);
    EXPECT_GE(images.size(), 11U);
    for (const std::string& image : images) {
        EXPECT_EQ(client.Get(image)->status, 200) << image;
    }
}

TEST_F(ExtrasTest, AVenueOfItsOwnIsInTheNestedForm) {
    Json venue = data("/venues/50a1f0c2e4b0000000000005");
    const Json icon = venue["categories"][0]["icon"];
    EXPECT_EQ(
        served(icon.at("prefix").get<std::string>() + "32" + icon.at("suffix").get<std::string>()),
        200);
    venue["categories"][0].erase("icon");
    EXPECT_EQ(venue, Json::parse(R"({"id": "50a1f0c2e4b0000000000005", "name": "Bahnhof Chur",
        "location": {"city": "Chur", "lat": 46.8533, "lng": 9.5288, "address": "Bahnhofplatz 1",
                     "state": "GR", "country": "Switzerland"},
        "categories": [{"id": "4bf58dd8d48988d129951735", "shortName": "Train station",
                        "primary": true}]})"));
    const Json sofa = data("/venues/50a1f0c2e4b0000000000009");
    EXPECT_EQ(sofa.at("categories"), Json::array());
    EXPECT_FALSE(sofa.at("location").contains("address"));
    EXPECT_EQ(send("GET", "/venues/50a1f0c2e4b00000000000ff").status, 404);
}

TEST_F(ExtrasTest, BylinesPointAtTheirWords) {
    int bylines = 0;
    int linked = 0;
    for (const Json& record : manyPosts()) {
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
            const std::size_t end = codePoints(body).size();
            EXPECT_EQ(entity.at("range"), Json({end - codePoints(title).size(), end}));
            EXPECT_TRUE(entity.at("link").get<std::string>().starts_with("kelo://"));
        }
    }
    EXPECT_GT(linked, 50);
    EXPECT_LT(linked, bylines);
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
    const Json page = data("/timelines/channels/3?size=7");
    EXPECT_EQ(channel.at("timeline"), page);
    EXPECT_EQ(page.at("records").size(), 7U);
    EXPECT_EQ(page.at("channel").at("channelId"), 3);
    for (const char* path : {"/channels/99", "/channels/x", "/channels/0"}) {
        EXPECT_EQ(send("GET", path).status, 404) << path;
    }
    EXPECT_EQ(send("GET", "/channels/3", "", "").status, 200);
    EXPECT_EQ(send("GET", "/channels/3", "", "unknown").status, 401);
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
    EXPECT_EQ(served(home.at(1).at("backgroundImage")), 200);
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
    EXPECT_EQ(references("home"), both);
    EXPECT_EQ(close("longform-launch").status, 200);
    EXPECT_EQ(close("longform-launch").status, 200);
    EXPECT_EQ(references("home"), std::vector<std::string>{"people-to-follow"});
    EXPECT_EQ(references("home", ""), both);
    EXPECT_EQ(references("home", signIn("kofi")), both);
    EXPECT_EQ(close("no-such-card").status, 404);
    EXPECT_EQ(close("longform-launch", "unknown").status, 401);
    // Not every card can be closed.
    EXPECT_EQ(close("editors-picks").status, 404);
    EXPECT_EQ(references("popular"), (std::vector<std::string>{"editors-picks", "rate-the-app"}));
}

} // namespace
} // namespace KeloServiceTest
