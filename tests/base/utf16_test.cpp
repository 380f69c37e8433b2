#include "support/Words.hpp"

#include <KeloAPI/base/internal/UTF16.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

bool isSurrogate(char32_t point) {
    return point >= 0xD800 && point <= 0xDFFF;
}

} // namespace

TEST(UTF16Test, ConvertsEveryCodePointThereAndBack) {
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        const std::string text = testing::utf8Of(point);
        ASSERT_EQ(isUTF8(text), !isSurrogate(point)) << static_cast<std::uint32_t>(point);
        if (isSurrogate(point)) {
            EXPECT_EQ(utf16(text), u"\uFFFD\uFFFD\uFFFD");
            EXPECT_FALSE(utf8(std::u16string(1, static_cast<char16_t>(point))));
            continue;
        }
        ASSERT_EQ(utf16(text).size(), point < 0x10000 ? 1U : 2U);
        ASSERT_EQ(utf8(utf16(text)), text) << static_cast<std::uint32_t>(point);
    }
}

TEST(UTF16Test, ReplacesEachByteThatBelongsToNoCharacter) {
    const std::pair<std::string, std::u16string> table[] = {
        {"a\x80z", u"a\uFFFDz"},
        {"\xC3", u"\uFFFD"},
        {"\xC3z", u"\uFFFDz"},
        {"\xC0\x80", u"\uFFFD\uFFFD"},
        {"\xFF\u00e9", u"\uFFFD\u00e9"},
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}};
    for (const auto& [text, expected] : table) {
        EXPECT_EQ(utf16(text), expected);
        EXPECT_FALSE(isUTF8(text));
    }
}

TEST(UTF16Test, RefusesSurrogatesAlone) {
    EXPECT_FALSE(utf8(std::u16string{0xD83D}));
    EXPECT_FALSE(utf8(std::u16string{0xDE00}));
    EXPECT_FALSE(utf8(std::u16string{0xDE00, 0xD83D}));
    EXPECT_FALSE(utf8(std::u16string{0xD83D, u'a'}));
    EXPECT_EQ(utf8(std::u16string{0xD83D, 0xDE00}), "\U0001F600");
    EXPECT_EQ(utf8(std::u16string{0}), std::string(1, '\0'));
}

} // namespace KeloAPI
