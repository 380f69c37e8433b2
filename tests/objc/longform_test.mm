#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

NSURL *video() {
    return [NSURL URLWithString:@"https://v.example/long.mp4"];
}

KLLongform *longform(NSURL *url) {
    return [[[KLLongform alloc] initWithLongformId:@"abc" url:url duration:61.5] autorelease];
}

} // namespace

TEST(KLLongformTest, StartsSquareWithoutAThumbnail) {
    KLLongform *one = longform(video());
    EXPECT_TRUE(same(one.longformId, @"abc"));
    EXPECT_TRUE(same(one.url, video()));
    EXPECT_EQ(one.duration, 61.5);
    EXPECT_EQ(one.aspectRatio, 1);
    EXPECT_EQ(one.thumbnailUrl, nil);
    EXPECT_FALSE(one.canPreload);
}

TEST(KLLongformTest, KeepsWhatIsSet) {
    KLLongform *one = longform(video());
    NSURL *thumbnail = [NSURL URLWithString:@"https://v.example/t.png"];
    one.aspectRatio = 0.5625;
    one.thumbnailUrl = thumbnail;
    one.canPreload = YES;
    EXPECT_EQ(one.aspectRatio, 0.5625);
    EXPECT_TRUE(same(one.thumbnailUrl, thumbnail));
    EXPECT_TRUE(one.canPreload);
    const auto &there = held<KeloAPI::KLLongform>(one);
    EXPECT_EQ(there.aspectRatio, 0.5625);
    EXPECT_EQ(there.thumbnailUrl->absoluteString(), "https://v.example/t.png");
    EXPECT_TRUE(there.canPreload);
    one.thumbnailUrl = nil;
    one.canPreload = NO;
    EXPECT_EQ(one.thumbnailUrl, nil);
    EXPECT_FALSE(one.canPreload);
}

TEST(KLLongformTest, NeedsAURL) {
    NSException *exception = raised([] { longform(nil); });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(KLLongformTest, StandsForWhatIsParsed) {
    id one = wrap(
        std::make_shared<KeloAPI::KLLongform>("x", *KeloAPI::URL::parse("https://v.example/"), 3));
    EXPECT_TRUE([one isMemberOfClass:[KLLongform class]]);
    EXPECT_EQ([one duration], 3);
}

TEST(KLEndlessLikesRangeTest, KeepsWhatItIsMadeOf) {
    KLEndlessLikesRange *range = [[[KLEndlessLikesRange alloc] initWithCount:7
                                                                       start:1.5
                                                                         end:2.5
                                                                       level:3] autorelease];
    EXPECT_EQ(range.count, 7);
    EXPECT_EQ(range.startTime, 1.5);
    EXPECT_EQ(range.endTime, 2.5);
    EXPECT_EQ(range.level, 3);
    KLEndlessLikesRange *parsed = wrap(std::make_shared<KeloAPI::KLEndlessLikesRange>(1, 2, 3, 4));
    ASSERT_TRUE([parsed isMemberOfClass:[KLEndlessLikesRange class]]);
    EXPECT_EQ(parsed.startTime, 2);
}

TEST(KLLongformDeathTest, InitialisersThatAreNotOffered) {
    EXPECT_DEATH([[KLLongform alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLLongform\n");
    EXPECT_DEATH([[KLEndlessLikesRange alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLEndlessLikesRange\n");
}
