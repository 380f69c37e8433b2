#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::JsonText;

static_assert(!std::is_copy_constructible_v<KLWatchPost> &&
              !std::is_copy_assignable_v<KLWatchPost>);
static_assert(std::is_default_constructible_v<KLWatchPost>);
static_assert(!std::is_default_constructible_v<PostThumbnail>);
static_assert(std::is_constructible_v<PostThumbnail, URL, int, int>);

namespace {

std::shared_ptr<KLWatchPost> parsedPost(const std::string& json) {
    return PostParser().parse(JsonText(json).object());
}

/// A post with "postId" and these members.
std::shared_ptr<KLWatchPost> post(const std::string& members) {
    return parsedPost(R"({"postId":1,)" + members + "}");
}

} // namespace

TEST(PostTest, IsEmptyByDefault) {
    const KLWatchPost empty;
    EXPECT_EQ(empty.postId, std::nullopt);
    EXPECT_EQ(empty.user, nullptr);
    EXPECT_EQ(empty.caption, std::nullopt);
    EXPECT_EQ(empty.created, std::nullopt);
    EXPECT_EQ(empty.videoUrl, std::nullopt);
    EXPECT_EQ(empty.thumbnailUrl, std::nullopt);
    EXPECT_EQ(empty.liked, std::nullopt);
    EXPECT_EQ(empty.currentUserRekelo, nullptr);
    EXPECT_FALSE(empty.rekeloed());
}

TEST(PostTest, IsRekeloedExactlyWithARekelo) {
    KLWatchPost some;
    some.currentUserRekelo = std::make_shared<KLRekelo>();
    EXPECT_TRUE(some.rekeloed());
    some.currentUserRekelo = nullptr;
    EXPECT_FALSE(some.rekeloed());
}

TEST(PostParserTest, ReadsAWholeRecord) {
    const auto full = parsedPost(R"({"postId":4321,"description":"A caption \ud83d\ude00 #tag",
        "created":"2015-06-01T08:09:10.500","thumbnailUrl":"https://v.example/t.jpg","liked":true,
        "myRepostId":77,"videoUrls":[{"videoUrl":"https://v.example/v.mp4","rate":0}],
        "username":"ann","loopCount":5,"loopVelocity":0.5})");
    EXPECT_EQ(full->postId, "4321");
    EXPECT_EQ(full->caption, "A caption \xF0\x9F\x98\x80 #tag");
    using namespace std::chrono;
    EXPECT_EQ(full->created, sys_days(2015y / 6 / 1) + 8h + 9min + 10s + 500ms);
    EXPECT_EQ(full->thumbnailUrl, "https://v.example/t.jpg");
    EXPECT_EQ(full->liked, true);
    ASSERT_NE(full->currentUserRekelo, nullptr);
    EXPECT_EQ(full->currentUserRekelo->rekeloId, "77");
    EXPECT_EQ(full->currentUserRekelo->user, nullptr);
    EXPECT_EQ(full->videoUrl, "https://v.example/v.mp4");
    ASSERT_NE(full->user, nullptr);
    EXPECT_EQ(full->user->username, "ann");
    EXPECT_NE(full->user->loopData, nullptr);
}

TEST(PostParserTest, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<KLWatchPost>(member); };
    testing::Reads emptyWhenMissing = testing::texts();
    emptyWhenMissing[""] = "";
    const testing::KeyTable<KLWatchPost>::Rules rules = {
        {"description", R"("hi")", "hi", showing(&KLWatchPost::caption), emptyWhenMissing,
         testing::absent},
        {"created", R"("1970-01-01T00:00:1.5")", "1500000", showing(&KLWatchPost::created),
         testing::dates(), testing::absent},
        {"thumbnailUrl", R"("a.jpg")", "a.jpg", showing(&KLWatchPost::thumbnailUrl),
         emptyWhenMissing, testing::absent},
        {"liked", "true", "true", showing(&KLWatchPost::liked), testing::flags(), testing::absent},
        {"myRepostId", "77", "77",
         [](const KLWatchPost& made) {
             return made.rekeloed() ? testing::shown(made.currentUserRekelo->rekeloId)
                                    : testing::absent;
         },
         testing::integers(), testing::absent},
        {"videoUrls",
         R"([{"videoUrl":"a.mp4","rate":0}])",
         "a.mp4",
         showing(&KLWatchPost::videoUrl),
         {},
         testing::absent},
    };
    testing::KeyTable<KLWatchPost>(testing::parseWith<PostParser>(), rules,
                                   [](const std::string& members) {
                                       return R"({"postId":1)" +
                                              (members.empty() ? "" : "," + members) + "}";
                                   })
        .check();
}

TEST(PostParserTest, OfAnIdentifierAloneMakesAPost) {
    const auto bare = parsedPost(R"({"postId":"x"})");
    EXPECT_EQ(bare->caption, "") << "a missing caption is an empty one";
    EXPECT_EQ(bare->thumbnailUrl, "");
    EXPECT_EQ(bare->created, std::nullopt);
    EXPECT_EQ(bare->liked, std::nullopt);
    EXPECT_EQ(bare->videoUrl, std::nullopt);
    EXPECT_FALSE(bare->rekeloed());
    ASSERT_NE(bare->user, nullptr);
    EXPECT_EQ(bare->user->username, "");
}

TEST(PostParserTest, AnyIdentifierThatIsThereBecomesText) {
    const std::pair<const char*, const char*> table[] = {
        {"4321", "4321"},
        {"\"4321\"", "4321"},
        {"\"\"", ""},
        {"-1", "-1"},
        {"9007199254740993", "9007199254740993"},
        {"18446744073709551615", "18446744073709551615"},
        {"1.0", "1"},
        {"1.5", "1.5"},
        {"1e3", "1000"},
        {"true", "1"},
        {"null", "<null>"},
        {"[1]", "[1]"},
        {"{\"a\":1}", "{\"a\":1}"},
    };
    for (const auto& [value, expected] : table) {
        EXPECT_EQ(parsedPost(R"({"postId":)" + std::string(value) + "}")->postId, expected);
    }
}

TEST(PostParserDeathTest, ARecordWithoutAnIdentifierStopsTheProcess) {
    const JsonText json(R"({"description":"x","user":{"postId":1},"postid":1})");
    EXPECT_DEATH(PostParser().parse(json.object()),
                 "^KeloAPI: contract violated: a post record has no \"postId\"\n$");
}

TEST(PostParserTest, CaptionAndThumbnailAreTextOrAbsent) {
    EXPECT_EQ(post(R"("description":"")")->caption, "");
    for (const char* value : {"5", "null", "false", "{}", "[\"a\"]"}) {
        EXPECT_EQ(post(R"("description":)" + std::string(value))->caption, std::nullopt) << value;
        EXPECT_EQ(post(R"("thumbnailUrl":)" + std::string(value))->thumbnailUrl, std::nullopt)
            << value;
    }
    EXPECT_EQ(post(R"("thumbnailUrl":"not a url")")->thumbnailUrl, "not a url")
        << "kept as text, whatever it is";
}

TEST(PostParserTest, ADateThatIsNoneIsAbsent) {
    for (const char* value : {"\"\"", "\"yesterday\"", "\"2015-06-01T08:09:10\"", "5", "null",
                              "\"2015-02-30T08:09:10.500\"", "{}"}) {
        EXPECT_EQ(post(R"("created":)" + std::string(value))->created, std::nullopt) << value;
    }
}

TEST(PostParserTest, LikedIsWhatConvertsToABoolean) {
    EXPECT_EQ(post(R"("liked":true)")->liked, true);
    EXPECT_EQ(post(R"("liked":false)")->liked, false);
    EXPECT_EQ(post(R"("liked":1)")->liked, true);
    EXPECT_EQ(post(R"("liked":0)")->liked, false);
    EXPECT_EQ(post(R"("liked":-0.5)")->liked, true);
    EXPECT_EQ(post(R"("liked":"true")")->liked, std::nullopt);
    EXPECT_EQ(post(R"("liked":null)")->liked, std::nullopt);
    EXPECT_EQ(post(R"("liked":[])")->liked, std::nullopt);
}

TEST(PostParserTest, AnyIntegerIsARekelo) {
    const std::pair<const char*, const char*> table[] = {
        {"0", "0"},
        {"77", "77"},
        {"-3", "-3"},
        {"2.9", "2"},
        {"true", "1"},
        {"1e3", "1000"},
        {"9007199254740993", "9007199254740993"},
    };
    for (const auto& [value, expected] : table) {
        const auto reposted = post(R"("myRepostId":)" + std::string(value));
        ASSERT_TRUE(reposted->rekeloed()) << value;
        EXPECT_EQ(reposted->currentUserRekelo->rekeloId, expected);
    }
    for (const char* value : {"null", "\"77\"", "[]", "{}"}) {
        EXPECT_FALSE(post(R"("myRepostId":)" + std::string(value))->rekeloed()) << value;
    }
}

TEST(PostParserTest, TheVideoIsTheFirstOfRateZero) {
    EXPECT_EQ(post(R"("videoUrls":[{"videoUrl":"A","rate":1},{"videoUrl":"B","rate":0},
                     {"videoUrl":"C","rate":0}])")
                  ->videoUrl,
              "B");
    EXPECT_EQ(post(R"("videoUrls":[{"videoUrl":"A","rate":2}])")->videoUrl, std::nullopt);
    EXPECT_EQ(post(R"("videoUrls":[{"videoUrl":"A"},{"rate":0},{"videoUrl":5,"rate":0},
                     {"videoUrl":"D","rate":"0"},{"videoUrl":null,"rate":0},
                     {"videoUrl":"E","rate":null},{},{"videoUrl":"F","rate":0.0}])")
                  ->videoUrl,
              "F");
    EXPECT_EQ(post(R"("videoUrls":[{"videoUrl":"","rate":0}])")->videoUrl, "");
    EXPECT_EQ(
        post(R"("videoUrls":[{"videoUrl":"A","rate":-1},{"videoUrl":"B","rate":false}])")->videoUrl,
        "B");
}

TEST(PostParserTest, VideosAreAListOfObjectsOrNone) {
    for (const char* value : {"null", "{}", "5", "\"A\"", "[]", R"([{"videoUrl":"A","rate":0},1])",
                              R"([null,{"videoUrl":"A","rate":0}])", R"({"videoUrl":"A","rate":0})",
                              R"([[{"videoUrl":"A","rate":0}]])"}) {
        EXPECT_EQ(post(R"("videoUrls":)" + std::string(value))->videoUrl, std::nullopt) << value;
    }
}

TEST(PostParserTest, TheAuthorIsTheUserObjectOrTheRecordItself) {
    EXPECT_EQ(post(R"("user":{"username":"a"},"username":"b")")->user->username, "a");
    EXPECT_EQ(post(R"("user":"x","username":"b")")->user->username, "b");
    EXPECT_EQ(post(R"("username":7)")->user->username, std::nullopt);
}

TEST(PostParserTest, OfTwoEqualKeysTheFirstCounts) {
    EXPECT_EQ(parsedPost(R"({"postId":1,"postId":2,"description":"a","description":"b"})")->postId,
              "1");
    EXPECT_EQ(post(R"("description":"a","description":"b")")->caption, "a");
}

TEST(PostParserTest, ListsOfPostsNeverFail) {
    const JsonText json(R"([{"postId":1},{"postId":null,"liked":"x"},{"postId":"c","user":3}])");
    EXPECT_EQ(PostParser().parseArray(json.root().objects().value()).size(), 3U);
}

TEST(PostThumbnailTest, KeepsWhatItWasMadeOf) {
    const auto url = *URL::parse("https://v.example/t.jpg");
    const PostThumbnail thumbnail(url, 480, INT64_MIN);
    EXPECT_EQ(thumbnail.url(), url);
    EXPECT_EQ(thumbnail.width(), 480);
    EXPECT_EQ(thumbnail.height(), INT64_MIN);
}

} // namespace KeloAPI
