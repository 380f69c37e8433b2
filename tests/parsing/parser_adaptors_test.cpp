#include "support/JsonText.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace KeloAPI {

using testing::JsonText;
using testing::Named;
using testing::NamedParser;

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
