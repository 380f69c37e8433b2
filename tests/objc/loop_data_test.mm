#include "objc/Models.hpp"
#include "objc/ObjcTest.hpp"
#include "objc/Told.hpp"

#include <cmath>
#include <limits>
#include <tuple>

using namespace KeloObjcTest;

namespace {

constexpr uint64_t most = std::numeric_limits<uint64_t>::max();

/// A snapshot taken so many seconds ago.
KLLoopData *snapshot(double velocity, double age) {
    KLLoopData *data = loops(100, velocity);
    data.created = [NSDate dateWithTimeIntervalSinceNow:-age];
    return data;
}

} // namespace

TEST(KLLoopDataTest, IsASnapshotOfNow) {
    KLLoopData *data = loops(most, 2.5);
    EXPECT_EQ([data.count unsignedLongLongValue], most);
    EXPECT_TRUE(same(data.velocity, [NSNumber numberWithDouble:2.5]));
    EXPECT_TRUE(isNow(data.created));
    EXPECT_FALSE(data.onFire);
}

TEST(KLLoopDataTest, EstimatesVelocityTimesElapsedSeconds) {
    EXPECT_EQ(snapshot(0, 1000).loopsSinceCreation, 0U);
    EXPECT_EQ(snapshot(0.25, 10).loopsSinceCreation, 2U) << "2.5 and a little: truncated";
    EXPECT_GE(snapshot(1e6, 10).loopsSinceCreation, 10000000U);
    EXPECT_LT(snapshot(1e6, 10).loopsSinceCreation, 20000000U);
}

TEST(KLLoopDataTest, AddsLoops) {
    KLLoopData *data = loops(100, 2.5);
    NSDate *created = data.created;
    [data addLoops:5];
    EXPECT_TRUE(same(data.count, [NSNumber numberWithInt:105]));
    EXPECT_TRUE(same(data.created, created));
    [data addLoops:most - 105];
    EXPECT_EQ([data.count unsignedLongLongValue], most);
}

TEST(KLLoopDataDeathTest, ArithmeticIsChecked) {
    KLLoopData *full = loops(most, 0);
    EXPECT_DEATH([full addLoops:1], "loop count overflows");
    constexpr const char *noCount = "estimated loops are not a 64-bit count";
    EXPECT_DEATH(std::ignore = snapshot(-1, 10).loopsSinceCreation, noCount);
    EXPECT_DEATH(std::ignore = snapshot(1, -100).loopsSinceCreation, noCount);
    EXPECT_DEATH(std::ignore = snapshot(std::nan(""), 10).loopsSinceCreation, noCount);
}
