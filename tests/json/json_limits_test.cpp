#include "support/JsonText.hpp"

#include <KeloAPI/json/Json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace KeloAPI {

using ::testing::_;
using ::testing::ElementsAre;
using testing::JsonText;

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
    std::size_t seen = 0;
    for (const std::string& digits : textsOf(JsonText(text).root())) {
        ASSERT_EQ(digits, std::to_string(++seen) + zeros);
    }
    EXPECT_EQ(seen, count);
}

} // namespace KeloAPI
