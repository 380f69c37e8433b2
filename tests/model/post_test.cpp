#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace KeloAPI::testing {

using namespace std::chrono_literals;

static_assert(!std::is_copy_constructible_v<KLWatchPost> &&
              !std::is_copy_assignable_v<KLWatchPost>);
static_assert(!std::is_default_constructible_v<PostThumbnail>);

namespace {

std::shared_ptr<KLWatchPost> parsedPost(const std::string& json) {
    return PostParser().parse(JsonText(json).object());
}

} // namespace

TEST(PostTest, IsEmptyByDefault) {
    const KLWatchPost empty;
    EXPECT_EQ(empty.postId, std::nullopt);
    EXPECT_EQ(empty.user, nullptr);
    EXPECT_EQ(empty.caption, std::nullopt);
    EXPECT_EQ(empty.thumbnailUrl, std::nullopt);
}

TEST(PostTest, IsRekeloedExactlyWithARekelo) {
    KLWatchPost some;
    some.currentUserRekelo = std::make_shared<KLRekelo>();
    EXPECT_TRUE(some.rekeloed());
    some.currentUserRekelo = nullptr;
    EXPECT_FALSE(some.rekeloed());
}

TEST(PostParserTest, EveryKeyWithEveryKindOfValue) {
    using P = KLWatchPost;
    // Kept as text, whatever it is.
    Reads emptyWhenMissing = texts();
    emptyWhenMissing[""] = "";
    Reads instants = dates();
    for (const char* none : {R"("yesterday")", R"("2015-06-01T08:09:10")"}) {
        instants[none] = absent;
    }
    Reads likes = flags();
    likes["-0.5"] = "true";
    Reads rekelos = integers();
    rekelos["1e3"] = "1000";
    rekelos["9007199254740993"] = "9007199254740993";
    const auto rekelo = [](const P& made) {
        return made.rekeloed() ? shown(made.currentUserRekelo->rekeloId) : absent;
    };
    // The first of rate 0; no list of objects is none.
    const Reads videos = {
        {R"([{"videoUrl":"A","rate":1},{"videoUrl":"B","rate":0},{"videoUrl":"C","rate":0}])", "B"},
        {R"([{"videoUrl":"A","rate":2}])", absent},
        {R"([{"videoUrl":"A"},{"rate":0},{"videoUrl":5,"rate":0},{"videoUrl":"D","rate":"0"},
             {"videoUrl":null,"rate":0},{"videoUrl":"E","rate":null},{},
             {"videoUrl":"F","rate":0.0}])",
         "F"},
        {R"([{"videoUrl":"","rate":0}])", ""},
        {R"([{"videoUrl":"A","rate":-1},{"videoUrl":"B","rate":false}])", "B"},
        {R"([{"videoUrl":"A","rate":0},1])", absent},
        {R"([null,{"videoUrl":"A","rate":0}])", absent},
        {R"([[{"videoUrl":"A","rate":0}]])", absent},
        {R"({"videoUrl":"A","rate":0})", absent},
    };
    checkParser<PostParser>(
        {{"description", R"("hi")", "hi", &P::caption, emptyWhenMissing, absent},
         {"created", R"("1970-01-01T00:00:1.5")", "1500000", &P::created, instants, absent},
         {"thumbnailUrl", R"("a.jpg")", "a.jpg", &P::thumbnailUrl, emptyWhenMissing, absent},
         {"liked", "true", "true", &P::liked, likes, absent},
         {"myRepostId", "77", "77", rekelo, rekelos, absent},
         {"videoUrls", R"([{"videoUrl":"a.mp4","rate":0}])", "a.mp4", &P::videoUrl, videos,
          absent}},
        R"({"postId":1)");
}

TEST(PostParserTest, ARekeloHasNoUser) {
    EXPECT_EQ(parsedPost(R"({"postId":1,"myRepostId":77})")->currentUserRekelo->user, nullptr);
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

TEST(PostParserTest, TheAuthorIsTheUserObjectOrTheRecordItself) {
    const std::pair<const char*, std::optional<std::string>> table[] = {
        {R"("user":{"username":"a"},"username":"b")", "a"},
        {R"("user":"x","username":"b")", "b"},
        {R"("username":7)", std::nullopt},
        {R"("liked":true)", ""},
    };
    for (const auto& [members, name] : table) {
        EXPECT_EQ(parsedPost(R"({"postId":1,)" + std::string(members) + "}")->user->username, name);
    }
    const auto counted = parsedPost(R"({"postId":1,"loopCount":5,"loopVelocity":0.5})");
    EXPECT_NE(counted->user->loopData, nullptr);
}

TEST(PostParserTest, OfTwoEqualKeysTheFirstCounts) {
    const auto post = parsedPost(R"({"postId":1,"postId":2,"description":"a","description":"b"})");
    EXPECT_EQ(post->postId, "1");
    EXPECT_EQ(post->caption, "a");
}

TEST(PostThumbnailTest, KeepsWhatItWasMadeOf) {
    const auto url = *URL::parse("https://v.example/t.jpg");
    const PostThumbnail thumbnail(url, 480, INT64_MIN);
    EXPECT_EQ(thumbnail.url, url);
    EXPECT_EQ(thumbnail.width, 480);
    EXPECT_EQ(thumbnail.height, INT64_MIN);
}

TEST(UserTest, IsEmptyByDefault) {
    const KLWatchUser user;
    EXPECT_EQ(user.username, std::nullopt);
    EXPECT_EQ(user.loopData, nullptr);
}

TEST(UserParserTest, EveryKeyWithEveryKindOfValue) {
    using U = KLWatchUser;
    Reads names = texts();
    names[""] = "";
    names[R"("a \u00e4")"] = "a \xC3\xA4";
    checkParser<UserParser>({{"username", R"("ann")", "ann", &U::username, names, absent}});
    const auto loops = [](auto member) {
        return [member](const U& made) {
            return made.loopData ? shown(std::invoke(member, *made.loopData)) : absent;
        };
    };
    checkParser<UserParser>(
        {{"loopCount", "10", "10", loops(&LoopData::count), numberTexts(), absent}},
        R"({"loopVelocity":1.5)");
    checkParser<UserParser>(
        {{"loopVelocity", "1.5", "1.5", loops(&LoopData::velocity), numberTexts(), absent}},
        R"({"loopCount":10)");
}

TEST(UserParserTest, LoopDataIsASnapshotOfNowWhateverTheStandAloneFormsKeysSay) {
    const Date before = Date::now();
    const JsonText json(R"({"loopCount":18446744073709551615,"loopVelocity":-2,
                            "created":"2015-03-01T12:30:05.250","onFire":true})");
    const auto data = UserParser().parse(json.object())->loopData;
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->count.stringValue(), "18446744073709551615");
    EXPECT_EQ(data->velocity, Number::of(-2));
    EXPECT_FALSE(data->onFire);
    EXPECT_GE(data->created, before);
    EXPECT_LE(data->created, Date::now());
}

TEST(ParseUserTest, PrefersTheObjectUnderUser) {
    EXPECT_EQ(parseUser(JsonText(R"({"user":{"username":"a"},"username":"b"})").object())->username,
              "a");
    EXPECT_EQ(parseUser(JsonText(R"({"user":{},"username":"b"})").object())->username, "")
        << "an empty object is one";
}

TEST(ParseUserTest, OtherwiseReadsTheRecordItself) {
    for (const char* value : {"\"x\"", "null", "5", "[{\"username\":\"a\"}]", "true"}) {
        const JsonText json(R"({"username":"b","user":)" + std::string(value) + "}");
        EXPECT_EQ(parseUser(json.object())->username, "b") << value;
    }
    EXPECT_EQ(parseUser(JsonText("{}").object())->username, "");
    const auto embedded =
        parseUser(JsonText(R"({"username":"b","loopCount":1,"loopVelocity":2})").object());
    EXPECT_EQ(embedded->username, "b");
    EXPECT_NE(embedded->loopData, nullptr);
}

static_assert(!std::is_default_constructible_v<LoopData>);

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr const char* noCount =
    "^KeloAPI: contract violated: estimated loops are not a 64-bit count\n$";
constexpr const char* overflow = "^KeloAPI: contract violated: loop count overflows\n$";

/// A snapshot taken so long ago.
std::shared_ptr<LoopData> snapshot(double velocity, std::chrono::microseconds age) {
    auto data = std::make_shared<LoopData>(100, velocity);
    data->created = Date::now() - age;
    return data;
}

} // namespace

TEST(LoopDataTest, IsASnapshotOfNow) {
    const auto before = Date::now();
    const LoopData data(Number::of(100), Number::of(2.5));
    EXPECT_EQ(data.count, Number::of(100));
    EXPECT_EQ(data.velocity, Number::of(2.5));
    EXPECT_FALSE(data.onFire);
    EXPECT_GE(data.created, before);
    EXPECT_LE(data.created, Date::now());
}

TEST(LoopDataTest, EstimatesVelocityTimesElapsedSeconds) {
    struct {
        double velocity;
        std::chrono::seconds age;
        std::uint64_t loops;
    } const table[] = {
        {2.5, 10s, 25}, {0.3, 10s, 3}, // 0.3 times a little more than 10
        {0.3, 9s, 2},                  // 2.7: truncated, not rounded
        {0.25, 10s, 2}, {0, 0s, 0},    {0, 24h * 365, 0}, {-0.0, 10s, 0}, {0, -10s, 0}, // -0.0 is 0
    };
    for (const auto& [velocity, age, loops] : table) {
        EXPECT_EQ(snapshot(velocity, age)->loopsSinceCreation(), loops) << velocity;
    }
    EXPECT_GE(snapshot(1e9, 1s)->loopsSinceCreation(), 1'000'000'000U);
}

TEST(LoopDataTest, TheVelocityMayBeAnyNumber) {
    LoopData data(Number::of(1), Number::of(true));
    data.created = Date::now() - 10s;
    EXPECT_EQ(data.loopsSinceCreation(), 10U);
    data.velocity = Number::of(3);
    EXPECT_EQ(data.loopsSinceCreation(), 30U);
}

TEST(LoopDataTest, EstimatesUpToSixtyFourBits) {
    const auto loops = snapshot(1.8e10, 1'000'000'000s)->loopsSinceCreation();
    EXPECT_GT(loops, 17'900'000'000'000'000'000U);
}

TEST(LoopDataTest, InstantsFarAwayAreNoOverflow) {
    LoopData data(Number::of(1), Number::of(1.0));
    data.created = Date::min();
    EXPECT_GT(data.loopsSinceCreation(), 9'000'000'000'000U);
    data.velocity = Number::of(-1.0);
    data.created = Date::max();
    EXPECT_GT(data.loopsSinceCreation(), 9'000'000'000'000U);
}

TEST(LoopDataDeathTest, AnEstimateThatIsNoCountStopsTheProcess) {
    for (const double velocity :
         {-1.0, -1e-9, infinity, -infinity, notANumber, 1e300, 18446744073709551616.0 / 10}) {
        EXPECT_DEATH(snapshot(velocity, 10s)->loopsSinceCreation(), noCount) << velocity;
    }
    EXPECT_DEATH(snapshot(1, -10s)->loopsSinceCreation(), noCount) << "created in the future";
}

TEST(LoopDataDeathTest, AVelocityBeyondDoublesIsReadAndStopsTheEstimate) {
    const auto data = parsed(parseWith<LoopDataParser>(),
                             R"({"count":1,"velocity":1e400,"created":"2015-06-01T08:09:10.500"})")
                          .first;
    EXPECT_EQ(data->velocity.doubleValue(), std::numeric_limits<double>::max());
    EXPECT_DEATH(data->loopsSinceCreation(), noCount);
}

TEST(LoopDataTest, AddsLoopsToTheCountOnly) {
    const auto data = snapshot(2.5, 10s);
    data->onFire = true;
    const Date instant = data->created;
    data->addLoops(5);
    EXPECT_EQ(data->count, Number::of(105));
    EXPECT_EQ(data->count.kind(), Number::Kind::Unsigned);
    EXPECT_EQ(data->created, instant);
    EXPECT_EQ(data->velocity, Number::of(2.5));
    EXPECT_TRUE(data->onFire);
    EXPECT_EQ(data->loopsSinceCreation(), 25U);
    data->addLoops(0);
    EXPECT_EQ(data->count, Number::of(105));
}

TEST(LoopDataTest, AddsUpToSixtyFourBits) {
    LoopData data(Number::of(UINT64_MAX - 1), Number::of(0));
    data.addLoops(1);
    EXPECT_EQ(data.count, Number::of(UINT64_MAX));
    data.addLoops(0);
    EXPECT_EQ(data.count, Number::of(UINT64_MAX));
    data.count = Number::of(1.9);
    data.addLoops(1);
    EXPECT_EQ(data.count, Number::of(2));
}

TEST(LoopDataDeathTest, ASumBeyondSixtyFourBitsStopsTheProcess) {
    LoopData full(Number::of(UINT64_MAX), Number::of(0));
    EXPECT_DEATH(full.addLoops(1), overflow);
    LoopData one(Number::of(1), Number::of(0));
    EXPECT_DEATH(one.addLoops(UINT64_MAX), overflow);
}

TEST(LoopDataParserTest, EveryKeyWithEveryKindOfValue) {
    const Date before = Date::now();
    const auto created = [before](const LoopData& data) {
        return data.created >= before && data.created <= Date::now() ? "now" : shown(data.created);
    };
    Reads instants = dates();
    instants[R"("2015-03-01T12:30:05")"] = "now";
    Reads fires = flags();
    fires["-0.0"] = "false";
    checkParser<LoopDataParser>({
        {"count", "11", "11", &LoopData::count, numberTexts(), fails(insufficient)},
        {"velocity", "0.25", "0.25", &LoopData::velocity, numberTexts(), fails(insufficient)},
        {"created", R"("1970-01-01T00:00:1.5")", "1500000", created, instants, "now"},
        {"onFire", "1", "true", &LoopData::onFire, fires, "false"},
    });
}

} // namespace KeloAPI::testing
