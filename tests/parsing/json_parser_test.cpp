#include "support/JsonText.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>
#include <KeloAPI/parsing/ParserError.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <set>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <unordered_set>

namespace KeloAPI {

using testing::JsonText;
using testing::Named;
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

namespace {

/// What `throwing` throws, as an error value.
Error thrownBy(const std::function<void()>& throwing) {
    try {
        throwing();
    } catch (...) {
        return thrownParserError();
    }
    return Error("nothing thrown", 0);
}

} // namespace

TEST(ParserErrorTest, IsTheErrorThatItWasMadeOf) {
    const Error own = Error::withMessage("own", 7, "no such thing");
    const ParserError error(own);
    EXPECT_EQ(error.error(), own);
    EXPECT_EQ(error.what(), own.description());
    EXPECT_EQ(thrownBy([&] { throw error; }), own);
}

TEST(ParserErrorTest, OtherExceptionsBecomeErrorsOfADomainOfTheirOwn) {
    EXPECT_EQ(thrownBy([] { throw JsonParseError(JsonParseError::InvalidData, "key"); }),
              JsonParseError(JsonParseError::InvalidData, "key").error());
    const Error told = thrownBy([] { throw std::runtime_error("told"); });
    EXPECT_EQ(told, Error::withMessage("KeloAPI.Exception", 0, "told"));
    const Error unknown = thrownBy([] { throw 42; });
    EXPECT_EQ(unknown.domain(), "KeloAPI.Exception");
    EXPECT_EQ(unknown.code(), 0);
    EXPECT_FALSE(unknown.localizedDescription().empty());
    EXPECT_THROW(thrownBy([] { throw std::bad_alloc(); }), std::bad_alloc);
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

namespace {

/// The parse error that a parser throws for an empty object; none where it throws none.
template <class P>
std::optional<JsonParseError> failureOf(const P& parser) {
    try {
        parser.parse(JsonText("{}").object());
    } catch (const JsonParseError& error) {
        return error;
    }
    return std::nullopt;
}

KLClosureParser<Named> closure(KLClosureParser<Named>::Parser parser) {
    return KLClosureParser<Named>(std::move(parser));
}

} // namespace

static_assert(!std::is_convertible_v<AnyObjectParserAdaptor&, AnyObjectJsonParser>);
static_assert(std::is_convertible_v<AnyObjectParserAdaptor&, const AnyObjectJsonParser&>);
static_assert(std::is_default_constructible_v<AnyObjectJsonParser>);

TEST(AnyObjectJsonParserTest, IsMeantToBeOverridden) {
    EXPECT_EQ(failureOf(AnyObjectJsonParser()), JsonParseError(JsonParseError::NotImplemented));
    struct Own final : AnyObjectJsonParser {
        std::shared_ptr<Object> parse(const JsonObject&) const override {
            return std::make_shared<Named>("own");
        }
    };
    const std::shared_ptr<AnyObjectJsonParser> parser = std::make_shared<Own>();
    const auto object = parser->parse(JsonText("{}").object());
    EXPECT_EQ(dynamic_cast<Named&>(*object).name, "own");
}

TEST(AnyObjectParserAdaptorTest, ThrowsTheWrappedParsersErrorOn) {
    for (int which = 0; which <= 4; ++which) {
        const auto error = static_cast<JsonParseError::Case>(which);
        const AnyObjectParserAdaptor adaptor(std::make_shared<KLClosureParser<Named>>(
            [error](const JsonObject&) -> std::shared_ptr<Named> { throw JsonParseError(error); }));
        EXPECT_EQ(failureOf(adaptor), JsonParseError(error));
    }
    const AnyObjectParserAdaptor other(std::make_shared<KLClosureParser<Named>>(
        [](const JsonObject&) -> std::shared_ptr<Named> { throw std::out_of_range("x"); }));
    EXPECT_THROW(other.parse(JsonText("{}").object()), std::out_of_range);
}

TEST(AnyObjectParserAdaptorTest, WithoutAnObjectIsInsufficientDataButForAClosure) {
    struct Nothing final : JsonParser<Named> {
        std::shared_ptr<Named> parse(const JsonObject&) const override { return nullptr; }
    };
    EXPECT_EQ(failureOf(AnyObjectParserAdaptor(std::make_shared<Nothing>())),
              JsonParseError(JsonParseError::InsufficientData));
    EXPECT_EQ(failureOf(AnyObjectParserAdaptor(std::make_shared<KLClosureParser<Named>>(
                  [](const JsonObject&) { return nullptr; }))),
              JsonParseError(JsonParseError::IncorrectType));
}

TEST(AnyObjectParserAdaptorTest, HoldsItsParserAsTheClassItIs) {
    const std::shared_ptr<NamedParser> parser = std::make_shared<testing::LouderParser>();
    const auto object = AnyObjectParserAdaptor(parser).parse(JsonText(R"({"name":"a"})").object());
    EXPECT_EQ(dynamic_cast<Named&>(*object).name, "a!");
}

TEST(AnyObjectParserAdaptorTest, WrapsAnAdaptorToo) {
    const AnyObjectParserAdaptor outer(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<NamedParser>()));
    EXPECT_EQ(failureOf(outer), JsonParseError(JsonParseError::InsufficientData));
}

TEST(ParserAdaptorsDeathTest, WithoutAParserOrAClosureStopTheProcess) {
    EXPECT_DEATH(AnyObjectParserAdaptor(std::shared_ptr<NamedParser>()),
                 "^KeloAPI: contract violated: an adaptor needs a parser\n$");
    EXPECT_DEATH(closure(nullptr),
                 "^KeloAPI: contract violated: a closure parser needs a closure\n$");
}

TEST(KLClosureParserTest, ReturnsWhatTheCallbackMakesOfTheObject) {
    std::shared_ptr<Named> made;
    const auto parser = closure([&](const JsonObject& json) {
        made = std::make_shared<Named>(json["x"].description());
        return made;
    });
    const auto parsed = parser.parse(JsonText(R"({"x":5})").object());
    EXPECT_EQ(parsed, made);
    EXPECT_EQ(parsed->name, "5");
}

TEST(KLClosureParserTest, WithoutAnObjectIsAnIncorrectType) {
    EXPECT_EQ(failureOf(closure([](const JsonObject&) { return nullptr; })),
              JsonParseError(JsonParseError::IncorrectType));
}

TEST(KLClosureParserTest, ThrowsTheCallbacksErrorOn) {
    EXPECT_EQ(failureOf(closure([](const JsonObject&) -> std::shared_ptr<Named> {
                  throw JsonParseError(JsonParseError::InvalidData);
              })),
              JsonParseError(JsonParseError::InvalidData));
    EXPECT_THROW(closure([](const JsonObject&) -> std::shared_ptr<Named> {
                     throw std::logic_error("x");
                 }).parse(JsonText("{}").object()),
                 std::logic_error);
}

TEST(KLEmptyParserTest, TakesAnyObject) {
    const KLEmptyParser parser;
    const auto one = parser.parse(JsonText("{}").object());
    const auto two = parser.parse(JsonText(R"({"a":[1,{"b":null}]})").object());
    EXPECT_NE(one, nullptr);
    EXPECT_NE(one, two) << "a new one each time";
}

} // namespace KeloAPI
