#include "support/JsonText.hpp"

#include <KeloAPI/json/Json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace KeloAPI {

using ::testing::_;
using ::testing::ElementsAre;
using testing::JsonText;

static_assert(!std::is_copy_constructible_v<JsonDocument>);
static_assert(std::is_move_constructible_v<JsonDocument>);

namespace {

constexpr double largestDouble = std::numeric_limits<double>::max();

/// The double that a number's text stands for, never infinite.
double expectedDouble(const std::string& text) {
    return std::clamp(std::strtod(text.c_str(), nullptr), -largestDouble, largestDouble);
}

std::vector<std::string> textsOf(const JsonValue& list) {
    std::vector<std::string> texts;
    const auto array = list.array().value();
    for (const JsonValue value : array) {
        texts.push_back(value.description());
    }
    return texts;
}

} // namespace

TEST(JsonValueTest, WhatIsNoNumberReadsAsNone) {
    const JsonText json(R"({"null":null,"number":"12","flag":"true","none":"","quoted":"a \"b\"",
                            "list":[1,"a",null],"map":{"a":{"b":[]}},"void":[]})");
    struct Row {
        JsonValue value;
        const char* description;
        std::optional<std::string> text;
    };
    const Row table[] = {{JsonValue(), "", {}},
                         {json["missing"], "", {}},
                         {json["null"], "<null>", {}},
                         {json["number"], "12", "12"},
                         {json["flag"], "true", "true"},
                         {json["none"], "", ""},
                         {json["quoted"], "a \"b\"", "a \"b\""},
                         {json["list"], R"([1,"a",null])", {}},
                         {json["map"], R"({"a":{"b":[]}})", {}},
                         {json["void"], "[]", {}}};
    for (const auto& [value, description, text] : table) {
        const std::string shown = description;
        SCOPED_TRACE(shown);
        EXPECT_EQ(value.description(), shown);
        EXPECT_EQ(value.text(), text);
        EXPECT_EQ(value.exists(), text || !shown.empty());
        EXPECT_EQ(value.isNull(), shown == "<null>");
        EXPECT_EQ(value.object().has_value(), shown.starts_with("{"));
        EXPECT_EQ(value.array().has_value(), shown.starts_with("["));
        EXPECT_EQ(value.objects().has_value(), shown == "[]");
        EXPECT_EQ(value.number(), std::nullopt);
        EXPECT_EQ(value.numberText(), std::nullopt);
        EXPECT_EQ(value.integer(), std::nullopt);
        EXPECT_EQ(value.boolean(), std::nullopt);
        EXPECT_EQ(value.real(), std::nullopt);
    }
}

TEST(JsonValueTest, ANumberReadsAsEveryKindOfOneAndKeepsAllItsDigits) {
    const std::string largestText = "1.7976931348623157e+308";
    const std::string sevens(400, '7');
    struct Row {
        std::string json;
        Number number;
        std::string text;
    };
    const Row table[] = {
        {"true", Number::of(true), "1"},
        {"false", Number::of(false), "0"},
        {"1234", Number::of(1234), "1234"},
        {"-5", Number::of(-5), "-5"},
        {"9223372036854775807", Number::of(INT64_MAX), "9223372036854775807"},
        {"-9223372036854775808", Number::of(INT64_MIN), "-9223372036854775808"},
        {"18446744073709551615", Number::of(UINT64_MAX), "18446744073709551615"},
        {"9007199254740993", Number::of(std::int64_t{9007199254740993}), "9007199254740993"},
        {"1.0", Number::of(1.0), "1"},
        {"1.5", Number::of(1.5), "1.5"},
        {"-2.9", Number::of(-2.9), "-2.9"},
        {"-0.0", Number::of(-0.0), "-0"},
        {"1e3", Number::of(1e3), "1000"},
        {"1e20", Number::of(1e20), "1e+20"},
        {"1e300", Number::of(1e300), "1e+300"},
        {"-1e300", Number::of(-1e300), "-1e+300"},
        // Beyond integers of 64 bits, and beyond doubles.
        {"18446744073709551616", Number::of(18446744073709551616.0), "18446744073709551616"},
        {"-9223372036854775809", Number::of(-9223372036854775808.0), "-9223372036854775809"},
        {"99999999999999999999", Number::of(1e20), "99999999999999999999"},
        {sevens, Number::of(largestDouble), sevens},
        {"1e400", Number::of(largestDouble), largestText},
        {"-1.5E+400", Number::of(-largestDouble), "-" + largestText},
        {"0.001e99999999999999999999", Number::of(largestDouble), largestText},
    };
    for (const auto& [text, number, description] : table) {
        SCOPED_TRACE(text);
        const JsonText alone(text);
        const JsonText inAnObject("{\"n\":" + text + "}");
        const JsonText besideALargeOne("{\"large\":1e400,\"n\":" + text + "}");
        for (const JsonValue value : {alone.root(), inAnObject["n"], besideALargeOne["n"]}) {
            ASSERT_EQ(value.number(), number);
            EXPECT_EQ(value.number()->kind(), number.kind());
            EXPECT_EQ(value.integer(), number.int64Value());
            EXPECT_EQ(value.boolean(), number.boolValue());
            EXPECT_EQ(value.real(), number.doubleValue());
            EXPECT_EQ(value.numberText(), description);
            EXPECT_EQ(value.description(), description);
            EXPECT_EQ(value.text(), std::nullopt);
            EXPECT_TRUE(value.exists());
            EXPECT_FALSE(value.isNull());
            EXPECT_FALSE(value.object() || value.array() || value.objects());
        }
    }
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
    EXPECT_EQ(json.root().array()->size(), 9U);
    EXPECT_THAT(textsOf(json.root()), ElementsAre("1", "[2,[3]]", "{\"a\":[4]}", "five", "<null>",
                                                  "2.5", "-7", "18446744073709551615", "1"));
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

TEST(JsonLimitsTest, WhatStandsBesideALargeNumberIsRead) {
    const JsonText json("\xEF\xBB\xBF"
                        R"( {"1e400":[-1,2.5,1e400,"1e400 \"-1e400\\",{"a":-0,
        "b":18446744073709551616}],"last":[18446744073709551617 ,7,1e-400,"\\"]})");
    EXPECT_THAT(textsOf(json["1e400"]),
                ElementsAre("-1", "2.5", "1.7976931348623157e+308", R"(1e400 "-1e400\)", _));
    EXPECT_THAT(textsOf(json["last"]), ElementsAre("18446744073709551617", "7", "0", "\\"));
}

TEST(JsonLimitsTest, AListOfLargeNumbersHasATextThatReadsTheSame) {
    const JsonText json("[18446744073709551616,1e400,-5]");
    const JsonText again(json.root().description());
    EXPECT_THAT(textsOf(again.root()), ElementsAre(Number::of(18446744073709551616.0).stringValue(),
                                                   Number::of(largestDouble).stringValue(), "-5"));
}

TEST(JsonLimitsTest, DoublesReadLikeTheSystemsOwn) {
    const std::string zeros(350, '0');
    for (const std::string mantissa : {"1", "-1", "0", "9.99", "0.001", "12345678901234567890",
                                       "1.7976931348623157", "1.7976931348623159"}) {
        for (int exponent = -420; exponent <= 420; ++exponent) {
            const std::string text = mantissa + "e" + std::to_string(exponent);
            const JsonText json(R"({"large":1e400,"n":)" + text + "}");
            EXPECT_EQ(json["n"].real(), expectedDouble(text)) << text;
        }
    }
    for (const std::string& text : {"0." + zeros + "1e700", "1" + zeros + "e-300",
                                    "1" + zeros + ".5e-700", "-0." + zeros + "1e-350"}) {
        EXPECT_EQ(JsonText(text).root().real(), expectedDouble(text)) << text;
    }
}

TEST(JsonLimitsTest, ASurrogateAloneIsReplaced) {
    const JsonText json(R"({"\uD800":"a\uDFFFb","pair":"\uD83D\uD83D\uDE00\ude00",
                            "lowest":"\uDBFF\uDC00\uDC00","escaped":"\\uD800\\\ud800\\",
                            "others":"\u00e4\uD7FF\uE000","number":1e400})");
    EXPECT_EQ(json["\xEF\xBF\xBD"].text(), "a\xEF\xBF\xBD"
                                           "b");
    EXPECT_EQ(json["pair"].text(), "\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD");
    EXPECT_EQ(json["lowest"].text(), "\xF4\x8F\xB0\x80\xEF\xBF\xBD");
    EXPECT_EQ(json["others"].text(), "\xC3\xA4\xED\x9F\xBF\xEE\x80\x80");
    EXPECT_EQ(json["escaped"].text(), "\\uD800\\\xEF\xBF\xBD\\");
    EXPECT_EQ(json["number"].real(), largestDouble);
}

TEST(JsonLimitsTest, EachOfManyLargeNumbersKeepsItsOwnDigits) {
    constexpr std::size_t count = 10'000;
    const std::string zeros(20, '0');
    std::string text = "[";
    for (std::size_t i = 1; i <= count; ++i) {
        text += std::to_string(i) + zeros + ",";
    }
    text.back() = ']';
    std::size_t seen = 0;
    for (const std::string& digits : textsOf(JsonText(text).root())) {
        ASSERT_EQ(digits, std::to_string(++seen) + zeros);
    }
    EXPECT_EQ(seen, count);
}

} // namespace KeloAPI
