#include "support/KeyTable.hpp"

#include <KeloAPI/model/LoopData.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace KeloAPI::testing {

using namespace std::chrono_literals;

static_assert(!std::is_default_constructible_v<LoopData>);

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr const char* noCount =
    "^KeloAPI: contract violated: estimated loops are no 64-bit count\n$";
constexpr const char* overflow = "^KeloAPI: contract violated: loop count overflows\n$";

/// A snapshot taken so long ago.
std::shared_ptr<LoopData> snapshot(double velocity, std::chrono::microseconds age) {
    auto data = std::make_shared<LoopData>(Number::of(100), Number::of(velocity));
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
