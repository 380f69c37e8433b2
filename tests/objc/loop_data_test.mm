#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <cmath>
#include <limits>
#include <tuple>

using namespace KeloBridge;
using namespace KeloObjcTest;
using KeloAPI::LoopData;

namespace {

constexpr uint64_t most = std::numeric_limits<uint64_t>::max();

NSNumber *real(double value) {
    return [NSNumber numberWithDouble:value];
}

KLLoopData *loops(uint64_t count, double velocity) {
    return [[[KLLoopData alloc] initWithCount:[NSNumber numberWithUnsignedLongLong:count]
                                     velocity:real(velocity)] autorelease];
}

/// A snapshot taken so many seconds ago.
KLLoopData *snapshot(double velocity, double age) {
    KLLoopData *data = loops(100, velocity);
    data.created = [NSDate dateWithTimeIntervalSinceNow:-age];
    return data;
}

KLLoopData *whole() {
    KLLoopData *data = loops(42, 2.5);
    data.created = [NSDate dateWithTimeIntervalSince1970:1400000000.25];
    data.onFire = YES;
    return data;
}

void expectWhole(KLLoopData *data) {
    ASSERT_TRUE([data isMemberOfClass:[KLLoopData class]]);
    EXPECT_TRUE(same(data.count, [NSNumber numberWithInt:42]));
    EXPECT_TRUE(same(data.velocity, real(2.5)));
    EXPECT_NEAR([data.created timeIntervalSince1970], 1400000000.25, 1e-6);
    EXPECT_TRUE(data.onFire);
}

/// Whether the date is of now, or of the last ten seconds.
bool isNow(NSDate *date) {
    const double age = -[date timeIntervalSinceNow];
    return age > -1e-3 && age < 10;
}

} // namespace

TEST(KLLoopDataTest, IsASnapshotOfNow) {
    KLLoopData *data = loops(most, 2.5);
    EXPECT_EQ([data.count unsignedLongLongValue], most);
    EXPECT_TRUE(same(data.velocity, real(2.5)));
    EXPECT_TRUE(isNow(data.created));
    EXPECT_FALSE(data.onFire);
}

TEST(KLLoopDataTest, KeepsWhatIsSet) {
    KLLoopData *data = loops(1, 1);
    data.count = [NSNumber numberWithInt:42];
    data.velocity = real(2.5);
    data.created = [NSDate dateWithTimeIntervalSince1970:1400000000.25];
    data.onFire = YES;
    expectWhole(data);
    EXPECT_EQ(held<LoopData>(data).count, KeloAPI::Number::of(42));
    EXPECT_EQ(held<LoopData>(data).velocity, KeloAPI::Number::of(2.5));
    EXPECT_TRUE(held<LoopData>(data).onFire);
    data.onFire = NO;
    EXPECT_FALSE(data.onFire);
}

TEST(KLLoopDataTest, NothingIsEverNil) {
    KLLoopData *data = whole();
    NSNumber *one = [NSNumber numberWithInt:1];
    NSException *const exceptions[] = {
        raised([&] { data.count = nil; }), raised([&] { data.velocity = nil; }),
        raised([&] { data.created = nil; }),
        raised([&] { [[[KLLoopData alloc] initWithCount:nil velocity:one] autorelease]; }),
        raised([&] { [[[KLLoopData alloc] initWithCount:one velocity:nil] autorelease]; })};
    for (NSException *exception : exceptions) {
        EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
    }
    expectWhole(data);
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

TEST(KLLoopDataTest, EncodesEveryPropertyInOrder) {
    KLLoopData *data = whole();
    NSString *lines = [NSString stringWithFormat:@"object count 42\n"
                                                  "object velocity 2.5\n"
                                                  "object created %@\n"
                                                  "bool onFire 1\n",
                                                 data.created];
    EXPECT_TRUE(same(KeloEncodedLines(data), lines));
}

TEST(KLLoopDataTest, ComesOutOfItsArchive) {
    expectWhole(archivedAndBack(whole()));
    KLLoopData *many = archivedAndBack(loops(std::numeric_limits<int64_t>::max(), 0));
    EXPECT_EQ([many.count unsignedLongLongValue], most / 2);
    EXPECT_FALSE(many.onFire);
}

TEST(KLLoopDataTest, CountsOf64BitsComeOutOfTheirArchive) {
    for (const uint64_t count : {most, most / 2 + 1}) {
        KLLoopData *here = archivedAndBack(loops(count, 0));
        EXPECT_EQ([here.count unsignedLongLongValue], count);
        EXPECT_EQ(held<LoopData>(here).count, KeloAPI::Number::of(count));
        // The C++ library takes the number that GNUstep has written: the same bits.
        const auto there = readThere<LoopData>(loops(count, 0));
        ASSERT_TRUE(there);
        EXPECT_EQ(there->count, KeloAPI::Number::of(static_cast<int64_t>(count)));
    }
}

TEST(KLLoopDataTest, NegativeCountsKeepTheirBits) {
    KLLoopData *negative = loops(1, -1);
    negative.count = [NSNumber numberWithInt:-5];
    KLLoopData *read = archivedAndBack(negative);
    EXPECT_EQ([read.count unsignedLongLongValue], [negative.count unsignedLongLongValue]);
    EXPECT_TRUE(same(read.velocity, real(-1)));
    EXPECT_EQ(readThere<LoopData>(negative)->count, KeloAPI::Number::of(-5));
}

TEST(KLLoopDataTest, InstantsComeOutOfTheirArchive) {
    KLLoopData *data = loops(1, 0);
    data.created = [NSDate dateWithTimeIntervalSinceReferenceDate:455000000.1];
    KLLoopData *read = archivedAndBack(data);
    EXPECT_TRUE(same(data.created, [NSDate dateWithTimeIntervalSinceReferenceDate:455000000.1]));
    EXPECT_TRUE(same(read.created, data.created));
}

TEST(KLLoopDataTest, BothLanguagesReadEachOthersArchives) {
    expectWhole(readHere(std::dynamic_pointer_cast<LoopData>(shared(whole()))));
    const auto there = readThere<LoopData>(whole());
    ASSERT_TRUE(there);
    expectWhole(wrap(there));
}

TEST(KLLoopDataTest, AnArchiveNeedsCountAndVelocity) {
    NSNumber *one = [NSNumber numberWithInt:1];
    KLLoopData *data = unarchived(KeloArchiveOf(
        @"KLLoopData",
        [NSDictionary dictionaryWithObjectsAndKeys:one, @"count", real(2.5), @"velocity", nil]));
    EXPECT_TRUE(same(data.count, one));
    EXPECT_TRUE(same(data.velocity, real(2.5)));
    EXPECT_TRUE(isNow(data.created));
    EXPECT_FALSE(data.onFire);
    EXPECT_EQ(unarchived(KeloArchiveOf(@"KLLoopData",
                                       [NSDictionary dictionaryWithObject:one forKey:@"count"])),
              nil);
    EXPECT_EQ(unarchived(KeloArchiveOf(@"KLLoopData",
                                       [NSDictionary dictionaryWithObject:one forKey:@"velocity"])),
              nil);
}

TEST(KLLoopDataTest, WhatIsOfAnotherKindInAnArchiveIsMissing) {
    NSNumber *one = [NSNumber numberWithInt:1];
    EXPECT_EQ(unarchived(KeloArchiveOf(
                  @"KLLoopData", [NSDictionary dictionaryWithObjectsAndKeys:@"1", @"count", one,
                                                                            @"velocity", nil])),
              nil);
    KLLoopData *data = unarchived(KeloArchiveOf(
        @"KLLoopData", [NSDictionary dictionaryWithObjectsAndKeys:one, @"count", one, @"velocity",
                                                                  @"today", @"created", nil]));
    EXPECT_TRUE(isNow(data.created));
}

TEST(KLLoopDataDeathTest, NeedsCountAndVelocity) {
    EXPECT_DEATH([[KLLoopData alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.LoopData\n");
}

TEST(KLLoopDataDeathTest, ArithmeticIsChecked) {
    KLLoopData *full = loops(most, 0);
    EXPECT_DEATH([full addLoops:1], "loop count overflows");
    constexpr const char *noCount = "estimated loops are no 64-bit count";
    EXPECT_DEATH(std::ignore = snapshot(-1, 10).loopsSinceCreation, noCount);
    EXPECT_DEATH(std::ignore = snapshot(1, -100).loopsSinceCreation, noCount);
    EXPECT_DEATH(std::ignore = snapshot(std::nan(""), 10).loopsSinceCreation, noCount);
}
