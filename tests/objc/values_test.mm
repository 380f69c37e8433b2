// Values as they cross between the languages.
#include "objc/ObjcTest.hpp"

#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>

using namespace KeloBridge;
using namespace KeloObjcTest;
using KeloAPI::Number;

namespace {

/// The text of the address that stands here for one of the library's.
std::string told(const char *address) {
    return text([url(KeloAPI::URL::parse(address)) absoluteString]);
}

/// The text of the library's address for one from here; "none" where there is none.
std::string taken(NSString *address) {
    NSURL *known = [NSURL URLWithString:address];
    EXPECT_NE(known, nil) << text(address);
    const auto read = optionalURL(known);
    return read ? read->absoluteString() : "none";
}

NSDictionary *holding(id value) {
    return [NSDictionary dictionaryWithObject:value forKey:@"key"];
}

/// What the library reads under "key".
std::string read(id value) {
    const auto read = document(holding(value));
    return (*read.root().object())["key"].description();
}

NSDate *secondsFromReference(double seconds) {
    return [NSDate dateWithTimeIntervalSinceReferenceDate:seconds];
}

} // namespace

TEST(ObjcURLTest, AuthoritiesWithoutAPath) {
    EXPECT_EQ(told("http://h?x=1"), "http://h/?x=1");
    EXPECT_EQ(told("https://cdn.example.com?id=5/6"), "https://cdn.example.com/?id=5/6");
    EXPECT_EQ(told("http://h#f"), "http://h/#f");
    EXPECT_EQ(told("http://h:80?x"), "http://h:80/?x");
    EXPECT_EQ(told("http://h/?x=1"), "http://h/?x=1");
    EXPECT_EQ(told("a/b?x#y"), "a/b?x#y");
}

TEST(ObjcURLTest, WhatMustBeThereIsNeverNil) {
    EXPECT_NE(url(KeloAPI::URL::empty()), nil);
    EXPECT_EQ([[url(KeloAPI::URL::empty()) absoluteString] length], 0U);
    EXPECT_TRUE(same([url(*KeloAPI::URL::parse("http://h?x")) absoluteString], @"http://h/?x"));
    const auto refused = KeloAPI::URL::parse("http://h;/"); // by GNUstep
    ASSERT_TRUE(refused);
    EXPECT_EQ(url(refused), nil);
    EXPECT_NE(url(*refused), nil);
    EXPECT_EQ([[url(*refused) absoluteString] length], 0U);
}

TEST(ObjcURLTest, EscapesWhatOnlyTheFoundationTakes) {
    EXPECT_EQ(taken(@"http://h/a?e=[1]"), "http://h/a?e=%5B1%5D");
    EXPECT_EQ(taken(@"http://h/a#b#c"), "http://h/a#b%23c");
    EXPECT_EQ(taken(@"http://h/a#[b]"), "http://h/a#%5Bb%5D");
    EXPECT_EQ(taken(@"http://[::1]:80/a?e=[1]"), "http://[::1]:80/a?e=%5B1%5D");
    EXPECT_EQ(taken(@"http://[::1]/a"), "http://[::1]/a");
    EXPECT_EQ(taken(@"http://h:99999/a"), "none");
    EXPECT_EQ(taken(@""), "");
    EXPECT_FALSE(optionalURL(nil));
}

TEST(ObjcErrorTest, KeepsAddressesOfEveryForm) {
    NSError *told = error(
        KeloAPI::Error("d", 1, {{"address", *KeloAPI::URL::parse("https://h?x=1")}, {"a", "b"}}));
    EXPECT_TRUE(
        same([[told userInfo] objectForKey:@"address"], [NSURL URLWithString:@"https://h/?x=1"]));
    EXPECT_TRUE(same([[told userInfo] objectForKey:@"a"], @"b"));
    told = error(
        KeloAPI::Error("d", 1, {{"address", *KeloAPI::URL::parse("http://h;/")}, {"a", "b"}}));
    EXPECT_TRUE(same([told userInfo], [NSDictionary dictionaryWithObject:@"b" forKey:@"a"]));
}

TEST(ObjcErrorTest, SkipsKeysThatAreNoText) {
    NSDictionary *facts =
        [NSDictionary dictionaryWithObjectsAndKeys:@"one", [NSNumber numberWithInt:1], @"two", @"2",
                                                   @"null", [NSNull null], nil];
    const KeloAPI::Error read = error([NSError errorWithDomain:@"d" code:3 userInfo:facts]);
    EXPECT_EQ(read.code(), 3);
    ASSERT_EQ(read.userInfo().size(), 1U);
    EXPECT_EQ(std::get<std::string>(read.userInfo().at("2")), "two");
}

TEST(ObjcNumberTest, DecimalNumbersKeepTheirIntegers) {
    const auto decimal = [](NSString *digits) {
        return number(static_cast<NSNumber *>([NSDecimalNumber decimalNumberWithString:digits]));
    };
    EXPECT_EQ(decimal(@"12345678901234567").int64Value(), 12345678901234567);
    EXPECT_EQ(decimal(@"-12345678901234567").int64Value(), -12345678901234567);
    EXPECT_EQ(decimal(@"18446744073709551615").uint64Value(),
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(decimal(@"7").kind(), Number::Kind::Signed);
    EXPECT_EQ(decimal(@"120e3").int64Value(), 120000);
    EXPECT_EQ(decimal(@"120e3").kind(), Number::Kind::Signed);
    EXPECT_EQ(decimal(@"12345678901234567.5").kind(), Number::Kind::Double);
    EXPECT_EQ(decimal(@"1e100").doubleValue(), 1e100);
    EXPECT_EQ(decimal(@"1.5"), Number::of(1.5));
    EXPECT_EQ(decimal(@"1.5").kind(), Number::Kind::Double);
    EXPECT_EQ(decimal(@"100000000000000000000").doubleValue(), 1e20);
    EXPECT_TRUE(
        std::isnan(number(static_cast<NSNumber *>([NSDecimalNumber notANumber])).doubleValue()));
}

TEST(ObjcDateTest, ReadBackEqual) {
    std::mt19937_64 random(5);
    // About the years 1938 to 2064, in microseconds.
    std::uniform_int_distribution<std::int64_t> instants(-2000000000000000, 2000000000000000);
    for (int round = 0; round < 2000; ++round) {
        const std::int64_t instant = instants(random);
        NSDate *given = secondsFromReference(static_cast<double>(instant / 1000000) +
                                             static_cast<double>(instant % 1000000) / 1e6);
        ASSERT_TRUE([date(date(given)) isEqual:given]) << instant;
        const KeloAPI::Date there{std::chrono::microseconds(instant)};
        ASSERT_EQ(date(date(there)), there) << instant;
    }
}

TEST(ObjcDateTest, EveryInstantCrosses) {
    EXPECT_EQ(date(secondsFromReference(0)).time_since_epoch(), std::chrono::seconds(978307200));
    EXPECT_EQ([date(KeloAPI::Date{}) timeIntervalSince1970], 0);
    EXPECT_EQ(date([NSDate dateWithTimeIntervalSince1970:-0.25]).time_since_epoch(),
              std::chrono::milliseconds(-250));
    for (const double far : {1e300, -1e300}) {
        const auto years = std::chrono::duration_cast<std::chrono::years>(
            date(secondsFromReference(far)).time_since_epoch());
        EXPECT_GT(std::abs(years.count()), 200000);
        EXPECT_EQ(years.count() > 0, far > 0);
    }
    EXPECT_NEAR([date(KeloAPI::Date(KeloAPI::Date::min())) timeIntervalSince1970],
                -9.223372036854775e12, 1);
    EXPECT_NEAR([date(KeloAPI::Date(KeloAPI::Date::max())) timeIntervalSince1970],
                9.223372036854775e12, 1);
}

TEST(ObjcJsonTest, TellsEveryKind) {
    EXPECT_EQ(read(@"a \"b\"\\\n\t\u00e9\u2028\U0001F600"), "a \"b\"\\\n\t\u00e9\u2028\U0001F600");
    EXPECT_EQ(read([NSNumber numberWithUnsignedLongLong:18446744073709551615U]),
              "18446744073709551615");
    EXPECT_EQ(read([NSNumber numberWithLongLong:-9223372036854775807]), "-9223372036854775807");
    EXPECT_EQ(read([NSNumber numberWithDouble:0.1]), "0.1");
    EXPECT_EQ(read([NSNumber numberWithDouble:1e300]), "1e+300");
    EXPECT_EQ(read([NSDecimalNumber decimalNumberWithString:@"12345678901234567"]),
              "12345678901234567");
    EXPECT_EQ(read(json(R"({"a": [true, false, null, {}, [], "x"]})")),
              R"({"a":[true,false,null,{},[],"x"]})");
}

TEST(ObjcJsonTest, WhatItCannotTellIsNull) {
    id const untold[] = {[NSDate date],
                         [NSURL URLWithString:@"http://h/"],
                         [NSData data],
                         [NSNumber numberWithDouble:NAN],
                         [NSNumber numberWithDouble:INFINITY],
                         [NSDecimalNumber notANumber],
                         [NSNull null]};
    for (id value : untold) {
        EXPECT_EQ(read(value), "<null>");
    }
    NSArray *list = [NSArray arrayWithObjects:@"a", [NSDate date], @"b", nil];
    EXPECT_EQ(read(list), R"(["a",null,"b"])");
}

TEST(ObjcJsonTest, LeavesOutKeysThatAreNoText) {
    NSDictionary *mixed = [NSDictionary
        dictionaryWithObjectsAndKeys:@"a", @"key", @"b", [NSNumber numberWithInt:1], nil];
    const auto known = document(mixed);
    EXPECT_EQ(known.root().description(), R"({"key":"a"})");
}

TEST(ObjcJsonTest, NilIsAnEmptyObject) {
    const auto none = document(nil);
    EXPECT_EQ(none.root().description(), "{}");
}

TEST(ObjcJsonTest, NestsAsDeepAsTheReader) {
    id value = @"bottom";
    for (int depth = 0; depth < 900; ++depth) {
        value = [NSArray arrayWithObject:value];
    }
    EXPECT_NE(read(value).find("bottom"), std::string::npos);
    for (int depth = 0; depth < 20000; ++depth) {
        value = holding(value);
    }
    EXPECT_EQ(read(value).find("bottom"), std::string::npos);
    EXPECT_NE(read(value).find("null"), std::string::npos);
}
