#include "support/TestService.hpp"

#include <algorithm>
#include <cctype>

namespace KeloServiceTest {
namespace {

class PostRecordTest : public ServiceTest {};

/// The text with every digit made 0.
std::string shape(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; }, '0');
    return text;
}

TEST_F(PostRecordTest, HasTheWiresTypes) {
    for (const Json& record : manyPosts()) {
        EXPECT_TRUE(record.at("postId").is_number_integer());
        EXPECT_GT(record.at("postId").get<std::int64_t>(), std::int64_t{1} << 53);
        const auto created = record.at("created").get<std::string>();
        EXPECT_EQ(shape(created), "0000-00-00T00:00:00.000000");
        EXPECT_TRUE(created.ends_with("000"));
        EXPECT_TRUE(record.at("description").is_string());
        pathOf(record.at("thumbnailUrl"));
        EXPECT_TRUE(record.at("liked").is_boolean());
        EXPECT_TRUE(!record.contains("myRepostId") || record.at("myRepostId").is_number_integer());
        EXPECT_TRUE(record.at("username").is_string());
        EXPECT_TRUE(record.at("loopCount").is_number());
        EXPECT_TRUE(record.at("loopVelocity").is_number());
        EXPECT_TRUE(record.at("loops").at("onFire").is_boolean());
    }
}

TEST_F(PostRecordTest, HasSeveralRenditionsAndOneDefault) {
    for (const Json& record : manyPosts()) {
        const Json& urls = record.at("videoUrls");
        EXPECT_GE(urls.size(), 2U);
        int defaults = 0;
        for (const Json& url : urls) {
            EXPECT_TRUE(pathOf(url.at("videoUrl")).starts_with("/media/"));
            EXPECT_TRUE(url.at("id").is_string());
            defaults += url.at("rate") == 0 && url.at("format") == "h264" ? 1 : 0;
        }
        EXPECT_EQ(defaults, 1);
    }
}

TEST_F(PostRecordTest, IsAsLargeAsARealOne) {
    const std::string body = get("/timelines/all?size=1000")->body;
    EXPECT_GT(body.size(), 1000U * 1500);
    EXPECT_LT(body.size(), 1000U * 3000);
}

TEST_F(PostRecordTest, EntitiesPointAtTheirWords) {
    int entities = 0;
    int behindEmoji = 0;
    for (const Json& record : manyPosts()) {
        const std::u32string caption = codePoints(record.at("description").get<std::string>());
        for (const Json& entity : record.at("entities")) {
            const auto start = entity.at("range").at(0).get<std::size_t>();
            const auto end = entity.at("range").at(1).get<std::size_t>();
            const std::string sign = entity.at("type") == "tag" ? "#" : "@";
            EXPECT_EQ(caption.substr(start, end - start),
                      codePoints(sign + entity.at("title").get<std::string>()));
            ++entities;
            behindEmoji += caption.substr(0, start).find_first_of(U"🔥😂🎩") != std::u32string::npos;
        }
    }
    EXPECT_GT(entities, 1000);
    EXPECT_GT(behindEmoji, 100);
}

TEST_F(PostRecordTest, CarriesNoMoreLikesAndCommentsThanAsked) {
    const auto most = [this](const std::string& query, const char* key) {
        std::size_t largest = 0;
        for (const Json& record : records("/timelines/all?size=1000" + query)) {
            largest = std::max(largest, record.at(key).at("records").size());
        }
        return largest;
    };
    EXPECT_EQ(most("", "likes"), 3U);
    EXPECT_EQ(most("&l_max=1&c_max=2", "likes"), 1U);
    EXPECT_EQ(most("&l_max=1&c_max=2", "comments"), 2U);
    EXPECT_EQ(most("&l_max=0", "likes"), 0U);
}

TEST_F(PostRecordTest, LikedAndRepostedAreTheViewers) {
    int liked = 0;
    int reposted = 0;
    for (const char* page : {"1", "2"}) {
        for (const Json& record : records(std::string("/timelines/all?size=1000&page=") + page)) {
            liked += record.at("liked").get<bool>() ? 1 : 0;
            reposted += record.contains("myRepostId") ? 1 : 0;
        }
    }
    EXPECT_EQ(liked, data("/users/me").at("likeCount"));
    EXPECT_GT(liked, 50);
    EXPECT_GT(reposted, 20);
    const Json anonymous = send("GET", "/timelines/all?size=1000", "", "").data();
    for (const Json& record : anonymous.at("records")) {
        EXPECT_EQ(record.at("liked"), false);
        EXPECT_FALSE(record.contains("myRepostId"));
    }
}

TEST_F(PostRecordTest, IsThatOfATimelineWhenAskedForAlone) {
    for (const char* query : {"", "?c_max=0&l_max=1", "?c_max=10&l_max=10"}) {
        for (const Json& record : records(std::string("/timelines/popular") + query)) {
            const std::string path = "/posts/" + record.at("postId").dump() + query;
            EXPECT_EQ(data(path), record);
            EXPECT_EQ(send("GET", path, "", "nobody").status, 401);
        }
    }
}

} // namespace
} // namespace KeloServiceTest
