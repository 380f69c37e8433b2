#include <KeloAPI/archive/internal/UTF16.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

/// One code point in UTF-8, by the definition of its ranges.
std::string encoded(char32_t point) {
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    if (point < 0x80) {
        return {byte(point)};
    }
    if (point < 0x800) {
        return {byte(0xC0 + point / 64), byte(0x80 + point % 64)};
    }
    if (point < 0x10000) {
        return {byte(0xE0 + point / 4096), byte(0x80 + point / 64 % 64), byte(0x80 + point % 64)};
    }
    return {byte(0xF0 + point / 262144), byte(0x80 + point / 4096 % 64),
            byte(0x80 + point / 64 % 64), byte(0x80 + point % 64)};
}

bool isSurrogate(char32_t point) {
    return point >= 0xD800 && point <= 0xDFFF;
}

} // namespace

TEST(UTF16Test, ConvertsEveryCodePointThereAndBack) {
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        const std::string text = encoded(point);
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
