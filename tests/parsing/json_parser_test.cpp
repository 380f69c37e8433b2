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

static_assert(JsonParseError::NotImplemented == 0);
static_assert(JsonParseError::NotInitialized == 1);
static_assert(JsonParseError::IncorrectType == 2);
static_assert(JsonParseError::InsufficientData == 3);
static_assert(JsonParseError::InvalidData == 4);

TEST(JsonParseErrorTest, SameCasesAreEqualAndHashToTheirCode) {
    for (int a = 0; a <= 4; ++a) {
        const JsonParseError one(static_cast<JsonParseError::Case>(a), "key");
        EXPECT_EQ(one.code(), a);
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
    const std::pair<const char*, std::optional<std::string>> table[] = {
        {R"("abc")", "abc"},
        {R"("")", ""},
        {"7", "7"},
        {"18446744073709551616", "18446744073709551616"},
        {"true", "1"},
        {"null", std::nullopt},
        {"[1]", std::nullopt},
        {R"({"a":1})", std::nullopt},
    };
    const KLEmptyParser parser;
    for (const auto& [value, expected] : table) {
        const JsonText json(R"({"id":)" + std::string(value) + "}");
        EXPECT_EQ(parser.parseId(json["id"]), expected) << value;
        EXPECT_EQ(parser.parseId(json["missing"]), std::nullopt);
    }
    EXPECT_EQ(parser.parseId(JsonValue()), std::nullopt);
}

TEST(ParserHelpersTest, TheDateFormatterIsOneForAllParsersAndThreads) {
    const DateFormatter* const formatter = &KLEmptyParser().dateFormatter();
    EXPECT_EQ(&PostParser().dateFormatter(), formatter);
    const DateFormatter* seen = nullptr;
    std::thread([&] { seen = &NamedParser().dateFormatter(); }).join();
    EXPECT_EQ(seen, formatter);
    EXPECT_TRUE(formatter->date("2015-03-01T12:30:05.250"));
}

TEST(ParseArrayTest, ReturnsTheItemsInOrderWithoutThoseThatFailWhereErrorsAreIgnored) {
    const JsonText good(R"([{"name":"a"},{"name":"b"},{"name":"a"}])");
    for (const bool ignoreError : {false, true}) {
        const NamedParser parser;
        EXPECT_EQ(namesOf(parser, good, ignoreError), (std::vector<std::string>{"a", "b", "a"}));
        EXPECT_EQ(parser.count, 3);
    }
    const JsonText mixed(R"([{"name":"a"},{"throw":4},{"name":"c"},{}])");
    EXPECT_EQ(namesOf(NamedParser(), mixed, true), (std::vector<std::string>{"a", "c"}));
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
