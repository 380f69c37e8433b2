#include "support/JsonText.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <unordered_set>

namespace KeloAPI {

using testing::JsonText;
using testing::NamedParser;

namespace {

std::vector<std::string> namesOf(const NamedParser& parser, const JsonText& json,
                                 bool ignoreError) {
    std::vector<std::string> names;
    for (const auto& item : parser.parseArray(json.root().objects().value(), ignoreError)) {
        names.push_back(item->name);
    }
    return names;
}

} // namespace

TEST(JsonParseErrorTest, TheCodeIsTheCasesPosition) {
    EXPECT_EQ(JsonParseError(JsonParseError::NotImplemented).code(), 0);
    EXPECT_EQ(JsonParseError(JsonParseError::NotInitialized).code(), 1);
    EXPECT_EQ(JsonParseError(JsonParseError::IncorrectType).code(), 2);
    EXPECT_EQ(JsonParseError(JsonParseError::InsufficientData).code(), 3);
    EXPECT_EQ(JsonParseError(JsonParseError::InvalidData).code(), 4);
}

TEST(JsonParseErrorTest, SameCasesAreEqualAndHashToTheirCode) {
    for (int a = 0; a <= 4; ++a) {
        const JsonParseError one(static_cast<JsonParseError::Case>(a), "key");
        EXPECT_EQ(std::hash<JsonParseError>()(one), static_cast<std::size_t>(a));
        for (int b = 0; b <= 4; ++b) {
            const JsonParseError other(static_cast<JsonParseError::Case>(b));
            EXPECT_EQ(one == other, a == b) << "the key plays no part";
        }
    }
    const std::unordered_set<JsonParseError> set = {
        JsonParseError::InvalidData, JsonParseError::IncorrectType, JsonParseError::InvalidData};
    EXPECT_EQ(set.size(), 2U);
}

TEST(JsonParseErrorTest, AsAnErrorHasDomainAndCodeAndNoMessage) {
    const Error error = JsonParseError(JsonParseError::IncorrectType).error();
    EXPECT_EQ(error.domain(), "KeloAPI.JsonParseError");
    EXPECT_EQ(error.code(), 2);
    EXPECT_TRUE(error.userInfo().empty());
    const Error keyed = JsonParseError(JsonParseError::InsufficientData, "count").error();
    EXPECT_FALSE(keyed.userInfo().contains(NSLocalizedDescriptionKey));
    EXPECT_EQ(std::get<std::string>(keyed.userInfo().at("key")), "count");
}

TEST(JsonParseErrorTest, NamesItsCaseToWhoCatchesIt) {
    std::set<std::string> names;
    for (int which = 0; which <= 4; ++which) {
        names.insert(JsonParseError(static_cast<JsonParseError::Case>(which)).what());
    }
    EXPECT_EQ(names.size(), 5U);
    EXPECT_TRUE(names.contains("KeloAPI.JsonParseError.IncorrectType"));
}

TEST(ParserHelpersTest, ParseIdTakesTextAndNumbers) {
    const JsonText json(R"({"text":"abc","empty":"","seven":7,"one":1.0,"half":1.5,"exp":1e3,
        "big":18446744073709551615,"low":-9223372036854775808,
        "beyond":18446744073709551616,"below":-123456789012345678901234567890,"yes":true,"no":false,
        "null":null,"list":[1],"map":{"a":1}})");
    const KLEmptyParser parser;
    EXPECT_EQ(parser.parseId(json["text"]), "abc");
    EXPECT_EQ(parser.parseId(json["empty"]), "");
    EXPECT_EQ(parser.parseId(json["seven"]), "7");
    EXPECT_EQ(parser.parseId(json["one"]), "1");
    EXPECT_EQ(parser.parseId(json["half"]), "1.5");
    EXPECT_EQ(parser.parseId(json["exp"]), "1000");
    EXPECT_EQ(parser.parseId(json["big"]), "18446744073709551615");
    EXPECT_EQ(parser.parseId(json["low"]), "-9223372036854775808");
    EXPECT_EQ(parser.parseId(json["beyond"]), "18446744073709551616");
    EXPECT_EQ(parser.parseId(json["below"]), "-123456789012345678901234567890");
    EXPECT_EQ(parser.parseId(json["yes"]), "1");
    EXPECT_EQ(parser.parseId(json["no"]), "0");
    EXPECT_EQ(parser.parseId(json["null"]), std::nullopt);
    EXPECT_EQ(parser.parseId(json["list"]), std::nullopt);
    EXPECT_EQ(parser.parseId(json["map"]), std::nullopt);
    EXPECT_EQ(parser.parseId(json["missing"]), std::nullopt);
    EXPECT_EQ(parser.parseId(JsonValue()), std::nullopt);
}

TEST(ParserHelpersTest, TheDateFormatterIsOneForAllParsers) {
    const DateFormatter* const formatter = &KLEmptyParser().dateFormatter();
    EXPECT_EQ(&PostParser().dateFormatter(), formatter);
    std::vector<const DateFormatter*> seen(4);
    std::vector<std::thread> threads;
    for (auto& entry : seen) {
        threads.emplace_back([&entry] { entry = &NamedParser().dateFormatter(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(seen, std::vector<const DateFormatter*>(4, formatter));
    using namespace std::chrono;
    EXPECT_EQ(formatter->date("2015-03-01T12:30:05.250"),
              sys_days(2015y / 3 / 1) + 12h + 30min + 5s + 250ms);
}

TEST(ParseArrayTest, ReturnsTheItemsInOrder) {
    const JsonText json(R"([{"name":"a"},{"name":"b"},{"name":"a"}])");
    const NamedParser parser;
    EXPECT_EQ(namesOf(parser, json, false), (std::vector<std::string>{"a", "b", "a"}));
    EXPECT_EQ(namesOf(parser, json, true), (std::vector<std::string>{"a", "b", "a"}));
    EXPECT_EQ(parser.count, 6);
}

TEST(ParseArrayTest, LeavesOutWhatFailsWhereErrorsAreIgnored) {
    const JsonText json(R"([{"name":"a"},{"throw":4},{"name":"c"},{}])");
    EXPECT_EQ(namesOf(NamedParser(), json, true), (std::vector<std::string>{"a", "c"}));
}

TEST(ParseArrayTest, OtherwiseTheFirstFailureIsThrownAndEndsIt) {
    const JsonText json(R"([{"name":"a"},{"throw":4},{"throw":2}])");
    const NamedParser parser;
    try {
        parser.parseArray(json.root().objects().value());
        FAIL() << "errors are not ignored by default";
    } catch (const JsonParseError& error) {
        EXPECT_EQ(error, JsonParseError(JsonParseError::InvalidData));
    }
    EXPECT_EQ(parser.count, 2) << "the third is not looked at";
}

TEST(ParseArrayTest, OfAnEmptyListCallsNoParser) {
    const NamedParser parser;
    EXPECT_TRUE(parser.parseArray(JsonText("[]").root().objects().value()).empty());
    EXPECT_TRUE(parser.parseArray(JsonObjectList()).empty());
    EXPECT_EQ(parser.count, 0);
}

TEST(ParseArrayTest, IgnoresErrorsOfEveryKind) {
    struct Throwing final : JsonParser<testing::Named> {
        std::shared_ptr<testing::Named> parse(const JsonObject& json) const override {
            if (json.empty()) {
                throw 42;
            }
            throw std::runtime_error("nested");
        }
    };
    const JsonText json(R"([{},{"a":1}])");
    EXPECT_TRUE(Throwing().parseArray(json.root().objects().value(), true).empty());
    EXPECT_THROW(Throwing().parseArray(json.root().objects().value()), int);
}

} // namespace KeloAPI
