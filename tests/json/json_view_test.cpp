#include "support/JsonText.hpp"

#include <KeloAPI/json/Json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace KeloAPI {

using ::testing::ElementsAre;
using testing::JsonText;

static_assert(!std::is_copy_constructible_v<JsonDocument>);
static_assert(std::is_move_constructible_v<JsonDocument>);

TEST(JsonValueTest, OneThatDoesNotExistIsNothing) {
    const JsonValue value;
    EXPECT_FALSE(value.exists());
    EXPECT_FALSE(value.isNull());
    EXPECT_EQ(value.text(), std::nullopt);
    EXPECT_FALSE(value.number());
    EXPECT_EQ(value.integer(), std::nullopt);
    EXPECT_EQ(value.boolean(), std::nullopt);
    EXPECT_EQ(value.real(), std::nullopt);
    EXPECT_FALSE(value.object());
    EXPECT_FALSE(value.array());
    EXPECT_FALSE(value.objects());
    EXPECT_EQ(value.description(), "");
}

TEST(JsonValueTest, NullExistsAndConvertsToNothing) {
    const JsonText json(R"({"a":null})");
    const JsonValue value = json["a"];
    EXPECT_TRUE(value.exists());
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(value.text(), std::nullopt);
    EXPECT_FALSE(value.number());
    EXPECT_EQ(value.boolean(), std::nullopt);
    EXPECT_FALSE(value.object());
    EXPECT_FALSE(value.array());
    EXPECT_EQ(value.description(), "<null>");
    EXPECT_FALSE(json["b"].exists());
}

TEST(JsonValueTest, TextNeverConvertsToANumber) {
    const JsonText json(R"({"a":"12","b":"true","c":""})");
    EXPECT_EQ(json["a"].text(), "12");
    EXPECT_EQ(json["a"].integer(), std::nullopt);
    EXPECT_EQ(json["a"].real(), std::nullopt);
    EXPECT_EQ(json["b"].boolean(), std::nullopt);
    EXPECT_EQ(json["c"].text(), "");
    EXPECT_FALSE(json["a"].isNull());
}

TEST(JsonValueTest, BooleansAreNumbers) {
    const JsonText json(R"({"t":true,"f":false})");
    EXPECT_EQ(json["t"].number()->kind(), Number::Kind::Boolean);
    EXPECT_EQ(json["t"].integer(), 1);
    EXPECT_EQ(json["f"].integer(), 0);
    EXPECT_EQ(json["t"].boolean(), true);
    EXPECT_EQ(json["f"].boolean(), false);
    EXPECT_EQ(json["t"].real(), 1.0);
    EXPECT_EQ(json["t"].text(), std::nullopt);
}

TEST(JsonValueTest, IntegersKeepAllTheirBits) {
    const JsonText json(R"({"max":9223372036854775807,"min":-9223372036854775808,
                            "big":18446744073709551615,"odd":9007199254740993})");
    EXPECT_EQ(json["max"].integer(), INT64_MAX);
    EXPECT_EQ(json["min"].integer(), INT64_MIN);
    EXPECT_EQ(json["big"].number()->uint64Value(), UINT64_MAX);
    EXPECT_EQ(json["big"].integer(), INT64_MAX) << "saturated";
    EXPECT_EQ(json["odd"].integer(), 9007199254740993);
    EXPECT_EQ(json["odd"].description(), "9007199254740993");
}

TEST(JsonValueTest, AnyNumberReadsAsAnInteger) {
    const JsonText json(R"({"a":1.0,"b":2.9,"c":-2.9,"d":1e3,"e":1e300,"f":-1e300,"g":-0.0})");
    EXPECT_EQ(json["a"].integer(), 1);
    EXPECT_EQ(json["b"].integer(), 2);
    EXPECT_EQ(json["c"].integer(), -2);
    EXPECT_EQ(json["d"].integer(), 1000);
    EXPECT_EQ(json["e"].integer(), INT64_MAX);
    EXPECT_EQ(json["f"].integer(), INT64_MIN);
    EXPECT_EQ(json["g"].integer(), 0);
    EXPECT_EQ(json["g"].boolean(), false);
    EXPECT_EQ(json["b"].boolean(), true);
}

TEST(JsonValueTest, EveryPresentValueHasAText) {
    const JsonText json(R"({"text":"a \"b\"","int":1234,"neg":-5,"one":1.0,"half":1.5,"exp":1e3,
        "yes":true,"no":false,"nil":null,"list":[1,"a",null],"map":{"a":{"b":[]}},"void":[]})");
    EXPECT_EQ(json["text"].description(), "a \"b\"");
    EXPECT_EQ(json["int"].description(), "1234");
    EXPECT_EQ(json["neg"].description(), "-5");
    EXPECT_EQ(json["one"].description(), "1");
    EXPECT_EQ(json["half"].description(), "1.5");
    EXPECT_EQ(json["exp"].description(), "1000");
    EXPECT_EQ(json["yes"].description(), "1");
    EXPECT_EQ(json["no"].description(), "0");
    EXPECT_EQ(json["nil"].description(), "<null>");
    EXPECT_EQ(json["list"].description(), R"([1,"a",null])");
    EXPECT_EQ(json["map"].description(), R"({"a":{"b":[]}})");
    EXPECT_EQ(json["void"].description(), "[]");
}

TEST(JsonValueTest, TextsAreUnescaped) {
    const JsonText json(R"({"a":"\u00e4\ud83d\ude00\n\/","b":"x\u0000y"})");
    EXPECT_EQ(json["a"].text(), "\xC3\xA4\xF0\x9F\x98\x80\n/");
    EXPECT_EQ(json["b"].text(), std::string_view("x\0y", 3));
}

TEST(JsonObjectTest, FindsValuesByKey) {
    const JsonText json(R"({"a":1,"\u0062":{"a":2,"c":[{"c":3}]},"c":4,"":5})");
    EXPECT_EQ(json["a"].integer(), 1);
    EXPECT_EQ(json["b"].object().value()["a"].integer(), 2);
    EXPECT_EQ(json["c"].integer(), 4) << "the inner key does not count";
    EXPECT_EQ(json[""].integer(), 5);
    EXPECT_FALSE(json["d"].exists());
    EXPECT_FALSE(json["A"].exists());
    EXPECT_EQ(json.object().size(), 4U);
    EXPECT_FALSE(json.object().empty());
}

TEST(JsonObjectTest, OfTwoEqualKeysTheFirstCounts) {
    const JsonText json(R"({"a":1,"b":null,"a":2,"b":3})");
    EXPECT_EQ(json["a"].integer(), 1);
    EXPECT_TRUE(json["b"].isNull());
    const auto [b, a] = json.object().values("b", "a");
    EXPECT_EQ(a.integer(), 1);
    EXPECT_TRUE(b.isNull());
    EXPECT_EQ(json.object().size(), 4U);
}

TEST(JsonObjectTest, FindsSeveralValuesInOnePass) {
    const JsonText json(
        R"({"x":[1,[2]],"b":2,"y":{"a":9},"a":"one","z":0.5,"c":18446744073709551615})");
    const auto [a, b, missing, c] = json.object().values("a", "b", "missing", "c");
    EXPECT_EQ(a.text(), "one");
    EXPECT_EQ(b.integer(), 2);
    EXPECT_FALSE(missing.exists());
    EXPECT_EQ(c.number()->uint64Value(), UINT64_MAX);
}

TEST(JsonObjectTest, IteratesInOrder) {
    const JsonText json(R"({"b":[1,2],"a":{"x":1},"b":1.5,"c":"t"})");
    std::vector<std::string> members;
    for (const auto member : json.object()) {
        members.push_back(std::string(member.key) + "=" + member.value.description());
    }
    EXPECT_THAT(members, ElementsAre("b=[1,2]", "a={\"x\":1}", "b=1.5", "c=t"));
    const JsonText empty("{}");
    EXPECT_TRUE(empty.object().empty());
    EXPECT_TRUE(empty.object().begin() == empty.object().end());
    EXPECT_FALSE(empty["a"].exists());
}

TEST(JsonArrayTest, IteratesInOrder) {
    const JsonText json(R"([1,[2,[3]],{"a":[4]},"five",null,2.5,-7,18446744073709551615,true])");
    const auto array = json.root().array().value();
    EXPECT_EQ(array.size(), 9U);
    std::vector<std::string> elements;
    for (const JsonValue value : array) {
        elements.push_back(value.description());
    }
    EXPECT_THAT(elements, ElementsAre("1", "[2,[3]]", "{\"a\":[4]}", "five", "<null>", "2.5", "-7",
                                      "18446744073709551615", "1"));
    EXPECT_FALSE(json.root().object());
    EXPECT_TRUE(JsonText("[]").root().array()->empty());
}

TEST(JsonObjectListTest, IsAllOrNothing) {
    for (const char* text : {"[1]", "[{},1]", "[1,{}]", "[{},null]", "[{},[]]", "[[{}]]",
                             "[{},\"a\",{}]", "{}", "1", "null", "\"[]\""}) {
        EXPECT_FALSE(JsonText(text).root().objects()) << text;
    }
    const JsonText json(R"([{"a":1},{},{"a":{"a":2}}])");
    const auto list = json.root().objects().value();
    EXPECT_EQ(list.size(), 3U);
    std::vector<std::string> elements;
    for (const JsonObject object : list) {
        elements.push_back(object["a"].description());
    }
    EXPECT_THAT(elements, ElementsAre("1", "", "{\"a\":2}"));
}

TEST(JsonObjectListTest, AnEmptyListIsAListOfObjects) {
    const JsonText json("[]");
    ASSERT_TRUE(json.root().objects());
    EXPECT_TRUE(json.root().objects()->empty());
    const JsonObjectList none;
    EXPECT_EQ(none.size(), 0U);
    EXPECT_TRUE(none.begin() == none.end());
}

TEST(JsonSizeTest, CountsBeyondWhatTheReaderKeepsItself) {
    // The reader's own counts stop at 2^24 - 1.
    constexpr std::size_t count = 0xFFFFFF + 2;
    std::string text;
    text.reserve(2 * count + 200);
    text += '[';
    for (std::size_t i = 0; i < count; ++i) {
        text += "0,";
    }
    text.back() = ']';
    const JsonText json(text);
    EXPECT_EQ(json.root().array()->size(), count);
}

// A view of a document that is gone at the end of the statement.
template <class Document>
constexpr bool givesItsRoot = requires {
    std::declval<Document>().root();
};
static_assert(givesItsRoot<JsonDocument&> && givesItsRoot<const JsonDocument&>);
static_assert(!givesItsRoot<JsonDocument> && !givesItsRoot<const JsonDocument>);
static_assert(!givesItsRoot<decltype(JsonDocument::parse("").value())>);

TEST(JsonDocumentTest, MovingItLeavesTheViewsValid) {
    auto first = std::move(JsonDocument::parse(R"({"a":"text"})").value());
    const JsonValue value = first.root().object().value()["a"];
    JsonDocument second = std::move(first);
    EXPECT_EQ(value.text(), "text");
    JsonDocument third = std::move(JsonDocument::parse("1").value());
    third = std::move(second);
    EXPECT_EQ(value.text(), "text");
    EXPECT_EQ(third.root().object().value()["a"].text(), "text");
}

TEST(JsonDocumentTest, NeedsItsTextNoLonger) {
    std::string text = R"({"a":"a text of some length, beyond any small buffer","n":12.5})";
    text.reserve(text.size() + 200);
    const auto document = JsonDocument::parse(text);
    std::fill(text.begin(), text.end(), 'x');
    ASSERT_TRUE(document);
    const auto object = document.value().root().object().value();
    EXPECT_EQ(object["a"].text(), "a text of some length, beyond any small buffer");
    EXPECT_EQ(object["n"].real(), 12.5);
}

} // namespace KeloAPI
