#include "objc/HostCode.h"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/parsing/ParserError.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

#include <stdexcept>
#include <thread>

using namespace KeloBridge;
using namespace KeloObjcTest;
using KeloAPI::JsonDocument;
using KeloAPI::JsonObject;
using KeloAPI::JsonParseError;
using KeloAPI::ParserError;
using Parser = KeloAPI::AnyObjectJsonParser;

namespace {

/// The Objective-C object that a C++ call of `parser` makes.
id parse(const Parser &parser, const char *text) {
    const auto read = JsonDocument::parse(text);
    return toObjC(parser.parse(*read.value().root().object()));
}

std::shared_ptr<Parser> crossed(AnyObjectJsonParser *parser) {
    return toNative<Parser>(parser);
}

class RaisingParser final : public Parser {
    std::shared_ptr<KeloAPI::Object> parse(const JsonObject &) const override {
        [NSException raise:NSRangeException format:@"out of names"];
        return nullptr;
    }
};

NSString *const parseDomain = @"KeloAPI.JsonParseError";

} // namespace

TEST(ParserTest, TheClassItselfParsesNothing) {
    AnyObjectJsonParser *parser = [[[AnyObjectJsonParser alloc] init] autorelease];
    NSError *failure = nil;
    EXPECT_EQ([parser parse:json("{}") error:&failure], nil);
    EXPECT_TRUE(same([failure domain], parseDomain));
    EXPECT_EQ([failure code], 0);
    EXPECT_EQ([parser parse:json("{}") error:nullptr], nil);
    EXPECT_EQ(toObjC(crossed(parser)), parser);
    EXPECT_THROW(parse(*crossed(parser), "{}"), JsonParseError);
}

TEST(ParserTest, AsksADerivedClass) {
    NameParser *parser = [[[NameParser alloc] init] autorelease];
    const auto native = crossed(parser);
    EXPECT_TRUE(same(parse(*native, R"({"name": "Caf\u00e9"})"), @"Caf\u00e9"));
    EXPECT_EQ(parser.asked, 1);
    EXPECT_EQ(crossed(parser), native);
    EXPECT_EQ(toObjC(native), parser);
    EXPECT_TRUE(same([parser parse:json(R"({"name": "x"})") error:nullptr], @"x"));
}

TEST(ParserTest, ErrorsOfADerivedClassCross) {
    const auto native = crossed([[[NameParser alloc] init] autorelease]);
    const auto code = [&](const char *text) {
        try {
            parse(*native, text);
        } catch (const JsonParseError &error) {
            return error.code();
        }
        return -1;
    };
    EXPECT_EQ(code(R"({"how": "insufficient"})"), JsonParseError::InsufficientData);
    EXPECT_EQ(code(R"({"how": "super"})"), JsonParseError::NotImplemented);
    EXPECT_EQ(code("{}"), JsonParseError::InsufficientData);
    EXPECT_EQ(code(R"({"name": "x"})"), -1);
}

TEST(ParserTest, AHostsOwnErrorKeepsItsDomain) {
    const auto native = crossed([[[NameParser alloc] init] autorelease]);
    try {
        parse(*native, R"({"how": "own"})");
        FAIL();
    } catch (const ParserError &thrown) {
        EXPECT_EQ(thrown.error().domain(), "host");
        EXPECT_EQ(thrown.error().code(), 71);
        EXPECT_EQ(std::get<std::string>(thrown.error().userInfo().at("why")), "no name");
        EXPECT_EQ(thrown.error().localizedDescription(), "It has no name");
    }
}

TEST(ParserTest, AnExceptionBecomesAnError) {
    const auto native = crossed([[[NameParser alloc] init] autorelease]);
    try {
        parse(*native, R"({"how": "raise"})");
        FAIL();
    } catch (const ParserError &thrown) {
        EXPECT_EQ(thrown.error().domain(), "NSRangeException");
        EXPECT_EQ(thrown.error().localizedDescription(), "out of names");
    }
}

TEST(ParserTest, ADerivedClassThatOverridesNothing) {
    IdleParser *parser = [[[IdleParser alloc] init] autorelease];
    NSError *failure = nil;
    EXPECT_EQ([parser parse:json("{}") error:&failure], nil);
    EXPECT_TRUE(same([failure domain], parseDomain));
    EXPECT_EQ([failure code], 0);
}

TEST(ParserTest, TheLibraryKeepsADerivedParserAlive) {
    std::shared_ptr<Parser> native;
    std::weak_ptr<Parser> seen;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    native = crossed([[[NameParser alloc] init] autorelease]);
    seen = native;
    [pool drain];
    EXPECT_TRUE(same(parse(*native, R"({"name": "still there"})"), @"still there"));
    // Not the other way round.
    pool = [NSAutoreleasePool new];
    NameParser *parser = static_cast<NameParser *>(toObjC(native));
    native.reset();
    [pool drain];
    EXPECT_TRUE(seen.expired());
    static_cast<void>(parser);
}

TEST(ParserTest, AParserIsTheSameOneAsLongAsItLives) {
    NameParser *parser = [[NameParser alloc] init];
    const std::weak_ptr<Parser> seen = crossed(parser);
    EXPECT_EQ(crossed(parser), seen.lock());
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    EXPECT_TRUE(same(parse(*crossed(parser), R"({"name": "x"})"), @"x"));
    [pool drain];
    EXPECT_EQ([parser retainCount], 1U);
    [parser release];
    EXPECT_TRUE(seen.expired());
}

TEST(ParserTest, ParsesOnTheLibrarysThreads) {
    NameParser *parser = [[[NameParser alloc] init] autorelease];
    const auto native = crossed(parser);
    std::shared_ptr<KeloAPI::Object> made;
    std::thread([&] {
        const auto read = JsonDocument::parse(R"({"name": "elsewhere"})");
        made = native->parse(*read.value().root().object());
    }).join();
    EXPECT_TRUE(same(toObjC(made), @"elsewhere"));
}

TEST(ParserTest, ADerivedParserParsesThePagesOfAChannel) {
    using TimelineParser = KeloAPI::KLChannelParser::TimelineParser;
    const auto timeline =
        std::make_shared<const TimelineParser>(crossed([[[TagParser alloc] init] autorelease]));
    const auto read = JsonDocument::parse(
        R"({"channelId": 3, "channel": "Cats",
            "timeline": {"nextPage": 2, "records": [{"name": "a"}, {}, {"name": "b"}]}})");
    KLChannel *channel =
        toObjC(KeloAPI::KLChannelParser(timeline).parse(*read.value().root().object()));
    EXPECT_EQ(channel.timelineData.count, 2);
    EXPECT_TRUE(channel.timelineData.hasNextPage);
    KLTag *last = [channel.timelineData objectAtIndex:1];
    EXPECT_TRUE([last isMemberOfClass:[KLTag class]]);
    EXPECT_TRUE(same(last.name, @"#b"));
}

TEST(ParserTest, NativeParsersCross) {
    AnyObjectJsonParser *parser = toObjC(std::make_shared<KeloAPI::AnyObjectParserAdaptor>(
        std::make_shared<KeloAPI::KLTagParser>()));
    EXPECT_TRUE([parser isMemberOfClass:[AnyObjectJsonParser class]]);
    KLTag *tag = [parser parse:json(R"({"tagId": 5, "tag": "cats", "postCount": 8})")
                         error:nullptr];
    EXPECT_TRUE([tag isMemberOfClass:[KLTag class]]);
    EXPECT_TRUE(same(tag.tagId, @"5"));
    EXPECT_TRUE(same(tag.name, @"#cats"));
    EXPECT_EQ(tag.count, 8);
    NSError *failure = nil;
    EXPECT_EQ([parser parse:json(R"({"tag": "cats"})") error:&failure], nil);
    EXPECT_TRUE(same([failure domain], parseDomain));
    EXPECT_EQ([failure code], 3);
    EXPECT_TRUE(same([[failure userInfo] objectForKey:@"key"], @"tagId"));
}

TEST(ParserTest, WhatNativeParsersThrowCrosses) {
    const auto throwing = [](auto thrown) -> AnyObjectJsonParser * {
        const auto closure = [=](const JsonObject &) -> std::shared_ptr<KeloAPI::Object> {
            throw thrown;
        };
        return toObjC(std::make_shared<KeloAPI::AnyObjectParserAdaptor>(
            std::make_shared<KeloAPI::KLClosureParser<KeloAPI::Object>>(closure)));
    };
    NSError *failure = nil;
    [throwing(ParserError(KeloAPI::Error("host", 12))) parse:json("{}") error:&failure];
    EXPECT_TRUE(same([failure domain], @"host"));
    EXPECT_EQ([failure code], 12);
    [throwing(std::runtime_error("odd")) parse:json("{}") error:&failure];
    EXPECT_TRUE(same([failure domain], @"KeloAPI.Exception"));
    EXPECT_TRUE(same([failure localizedDescription], @"odd"));
    [throwing(12) parse:json("{}") error:&failure];
    EXPECT_TRUE(same([failure domain], @"KeloAPI.Exception"));
    EXPECT_TRUE(same([failure localizedDescription], @"an exception of an unknown type"));
    EXPECT_EQ([throwing(12) parse:json("{}") error:nullptr], nil);
}

TEST(ParserTest, WhatIsRaisedInANativeParserIsStopped) {
    AnyObjectJsonParser *parser = toObjC(std::make_shared<RaisingParser>());
    NSError *failure = nil;
    EXPECT_EQ([parser parse:json("{}") error:&failure], nil);
    EXPECT_TRUE(same([failure domain], @"KeloAPI.Exception"));
}

TEST(ParserTest, NilFailsTheParse) {
    AnyObjectJsonParser *parser = [[[AnyObjectJsonParser alloc] init] autorelease];
    NSError *failure = nil;
    EXPECT_EQ([parser parse:nil error:&failure], nil);
    EXPECT_TRUE(same([failure domain], @"KeloAPI.JsonParseError"));
    EXPECT_EQ([parser parse:nil error:nullptr], nil);
}
