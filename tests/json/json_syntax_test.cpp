#include "json/acceptance.hpp"
#include "json/json_texts.hpp"

#include <KeloAPI/json/Json.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

using testing::accepts;
using testing::acceptsBesideALargeNumber;

std::string nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

} // namespace

TEST(JsonSyntaxTest, AcceptsEveryWellFormedText) {
    const auto texts = testing::wellFormedTexts();
    EXPECT_EQ(texts.size(), 129U);
    for (const std::string& text : texts) {
        const bool hasByteOrderMark = text.starts_with("\xEF");
        EXPECT_TRUE(accepts(text)) << text;
        EXPECT_EQ(acceptsBesideALargeNumber(text), !hasByteOrderMark) << text;
    }
}

TEST(JsonSyntaxTest, RefusesEveryMalformedText) {
    const auto texts = testing::malformedTexts();
    EXPECT_EQ(texts.size(), 249U);
    for (const std::string& text : texts) {
        EXPECT_FALSE(accepts(text)) << text;
        EXPECT_FALSE(acceptsBesideALargeNumber(text)) << text;
    }
}

TEST(JsonSyntaxTest, RefusesEveryTextThatIsCutOff) {
    const std::string text =
        R"({"a":[1,-2.5e3,"x\u00e4\n",{"b":null,"c":true}],"d":false,"\"":{}})";
    EXPECT_TRUE(accepts(text));
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(accepts(text.substr(0, size))) << text.substr(0, size);
    }
}

TEST(JsonSyntaxTest, AnyByteAtAnyPlaceIsHandled) {
    const std::string text = R"({"a":[1,"x\u0041",{"b":null}]})";
    for (std::size_t at = 0; at < text.size(); ++at) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string changed = text;
            changed[at] = static_cast<char>(byte);
            if (const auto document = JsonDocument::parse(changed)) {
                EXPECT_TRUE(document.value().root().object()) << changed;
            }
        }
    }
}

TEST(JsonSyntaxTest, ReadsDeepTextsUpToALimit) {
    EXPECT_TRUE(accepts(nested(512)));
    EXPECT_TRUE(accepts(nested(1024)));
    EXPECT_FALSE(accepts(nested(1025)));
    EXPECT_FALSE(accepts(nested(1'000'000)));
    EXPECT_FALSE(accepts(std::string(1'000'000, '[')));
    EXPECT_FALSE(accepts(std::string(1'000'000, '{')));
}

TEST(JsonSyntaxTest, ReadsLargeTexts) {
    std::string text = "[";
    for (int i = 0; i < 100'000; ++i) {
        text += "{\"a\":\"bcdefghij\"},";
    }
    text.back() = ']';
    const auto document = JsonDocument::parse(text);
    ASSERT_TRUE(document);
    EXPECT_EQ(document.value().root().objects()->size(), 100'000U);
}

TEST(JsonSyntaxTest, AnErrorNamesTheReadersDomainAndReason) {
    const auto document = JsonDocument::parse("{\"a\":01}");
    ASSERT_FALSE(document);
    EXPECT_EQ(document.error().domain(), JsonDocument::errorDomain);
    EXPECT_NE(document.error().code(), 0);
    EXPECT_FALSE(document.error().localizedDescription().empty());
}

} // namespace KeloAPI
