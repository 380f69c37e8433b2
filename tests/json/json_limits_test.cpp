#include "json/json_texts.hpp"
#include "support/JsonText.hpp"

#include <KeloAPI/json/Json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace KeloAPI {

using testing::JsonText;

namespace {

constexpr double largestDouble = std::numeric_limits<double>::max();

/// The double that a number's text stands for, never infinite.
double expectedDouble(const std::string& text) {
    return std::clamp(std::strtod(text.c_str(), nullptr), -largestDouble, largestDouble);
}

bool readsBoth(std::string_view first, std::string_view second) {
    std::string text = R"({"a":)";
    text.append(first).append(R"(,"b":)").append(second).append("}");
    return static_cast<bool>(JsonDocument::parse(text));
}

} // namespace

TEST(JsonLimitsTest, AnIntegerBeyond64BitsIsTheNearestDoubleAndSaturates) {
    const JsonText json(R"({"up":18446744073709551616,"down":-9223372036854775809,
                            "long":123456789012345678901234567890})");
    EXPECT_EQ(json["up"].real(), 18446744073709551616.0);
    EXPECT_EQ(json["up"].integer(), INT64_MAX);
    EXPECT_EQ(json["up"].number()->uint64Value(), UINT64_MAX);
    EXPECT_EQ(json["up"].boolean(), true);
    EXPECT_EQ(json["down"].real(), -9223372036854775808.0);
    EXPECT_EQ(json["down"].integer(), INT64_MIN);
    EXPECT_EQ(json["down"].number()->uint64Value(), 0U);
    EXPECT_EQ(json["long"].real(), 123456789012345678901234567890.0);
}

TEST(JsonLimitsTest, AnIntegerBeyond64BitsKeepsItsDigits) {
    const std::string longest(400, '7');
    const JsonText json(R"({"up":18446744073709551616,"down":-9223372036854775809,"last":)" +
                        longest + "}");
    EXPECT_EQ(json["up"].numberText(), "18446744073709551616");
    EXPECT_EQ(json["down"].numberText(), "-9223372036854775809");
    EXPECT_EQ(json["last"].numberText(), longest);
    EXPECT_EQ(json["last"].description(), longest);
    EXPECT_EQ(JsonText("99999999999999999999").root().numberText(), "99999999999999999999");
}

TEST(JsonLimitsTest, ANumberBeyondDoublesIsTheLargest) {
    const JsonText json(R"({"up":1e400,"down":-1.5E+400,"digits":)" + std::string(400, '9') +
                        R"(,"huge":0.001e99999999999999999999})");
    EXPECT_EQ(json["up"].real(), largestDouble);
    EXPECT_EQ(json["up"].integer(), INT64_MAX);
    EXPECT_EQ(json["up"].numberText(), "1.7976931348623157e+308");
    EXPECT_EQ(json["down"].real(), -largestDouble);
    EXPECT_EQ(json["down"].integer(), INT64_MIN);
    EXPECT_EQ(json["digits"].real(), largestDouble);
    EXPECT_EQ(json["huge"].real(), largestDouble);
}

TEST(JsonLimitsTest, OtherNumbersHaveTheirTextAsEver) {
    const JsonText json(R"({"i":42,"u":18446744073709551615,"d":1.0,"e":1e20,"t":true,"s":"1",
                            "n":null,"large":1e400})");
    EXPECT_EQ(json["i"].numberText(), "42");
    EXPECT_EQ(json["u"].numberText(), "18446744073709551615");
    EXPECT_EQ(json["d"].numberText(), "1");
    EXPECT_EQ(json["e"].numberText(), "1e+20");
    EXPECT_EQ(json["t"].numberText(), "1");
    EXPECT_EQ(json["s"].numberText(), std::nullopt);
    EXPECT_EQ(json["n"].numberText(), std::nullopt);
    EXPECT_EQ(json["missing"].numberText(), std::nullopt);
}

TEST(JsonLimitsTest, WhatStandsBesideALargeNumberIsRead) {
    const JsonText json("\xEF\xBB\xBF"
                        R"( {"1e400":[-1,2.5,1e400,"1e400 \"-1e400\\",{"a":-0,
        "b":18446744073709551616}],"last":[18446744073709551617 ,7,1e-400,"\\"]})");
    std::vector<std::string> texts;
    const auto list = json["1e400"].array().value();
    for (const JsonValue value : list) {
        texts.push_back(value.description());
    }
    const std::string beyond = "1.7976931348623157e+308";
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_EQ(texts[0], "-1");
    EXPECT_EQ(texts[1], "2.5");
    EXPECT_EQ(texts[2], beyond);
    EXPECT_EQ(texts[3], R"(1e400 "-1e400\)");
    texts.clear();
    const auto last = json["last"].array().value();
    for (const JsonValue value : last) {
        texts.push_back(value.description());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"18446744073709551617", "7", "0", "\\"}));
}

TEST(JsonLimitsTest, AListOfLargeNumbersHasATextThatReadsTheSame) {
    const JsonText json("[18446744073709551616,1e400,-5]");
    const JsonText again(json.root().description());
    const auto list = again.root().array().value();
    std::vector<double> numbers;
    for (const JsonValue value : list) {
        numbers.push_back(value.real().value());
    }
    EXPECT_EQ(numbers, (std::vector<double>{18446744073709551616.0, largestDouble, -5}));
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

TEST(JsonLimitsTest, ALargeNumberChangesNothingInWhatIsRefused) {
    for (const std::string_view text : testing::malformedTexts) {
        EXPECT_FALSE(readsBoth("1e400", text)) << text;
        EXPECT_FALSE(readsBoth(text, "1e400")) << text;
        EXPECT_FALSE(readsBoth("18446744073709551616", text)) << text;
    }
    for (const std::string_view text :
         {"1e400a", "01e400", "1e400.5", "-01e400", "1.e400", "1e400 1", "+1e400", "--1e400",
          "1e400-1", "1e400\"\"", "true1e400", "018446744073709551616", "18446744073709551616x",
          "18446744073709551616 0", "18446744073709551616[]", "- 18446744073709551616"}) {
        EXPECT_FALSE(JsonDocument::parse("[" + std::string(text) + "]")) << text;
        EXPECT_FALSE(JsonDocument::parse(std::string(text))) << text;
    }
}

TEST(JsonLimitsTest, ALargeNumberChangesNothingInWhatIsRead) {
    for (const std::string_view text : testing::wellFormedTexts) {
        if (!text.starts_with("\xEF")) {
            EXPECT_TRUE(readsBoth("1e400", text)) << text;
            EXPECT_TRUE(readsBoth(text, "18446744073709551616")) << text;
        }
    }
}

TEST(JsonLimitsTest, ASurrogateAloneIsReplaced) {
    const JsonText json(R"({"\uD800":"a\uDFFFb","pair":"\uD83D\uD83D\uDE00\ude00",
                            "escaped":"\\uD800\\\ud800\\","number":1e400})");
    EXPECT_EQ(json["\xEF\xBF\xBD"].text(), "a\xEF\xBF\xBD"
                                           "b");
    EXPECT_EQ(json["pair"].text(), "\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD");
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
    const JsonText json(text);
    const auto list = json.root().array().value();
    std::size_t seen = 0;
    for (const JsonValue value : list) {
        ++seen;
        ASSERT_EQ(value.numberText(), std::to_string(seen) + zeros);
    }
    EXPECT_EQ(seen, count);
}

} // namespace KeloAPI
