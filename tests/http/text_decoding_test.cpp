#include <KeloAPI/http/internal/TextDecoding.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

TEST(CharsetTest, IsReadFromTheContentType) {
    const std::pair<const char*, const char*> table[] = {
        {"", ""},
        {"text/plain", ""},
        {"text/plain;", ""},
        {"text/plain; charset=utf-8", "utf-8"},
        {"text/plain;charset=UTF-8", "UTF-8"},
        {"text/plain; CharSet=latin1", "latin1"},
        {"text/plain; charset=\"utf-8\"", "utf-8"},
        {"text/plain; charset = utf-8 ", "utf-8"},
        {"text/plain; format=flowed; charset=utf-8", "utf-8"},
        {"text/plain; charset=utf-8; format=flowed", "utf-8"},
        {"text/plain; charset=a; charset=b", "a"},
        {"text/plain; xcharset=a", ""},
        {"text/plain; charset", ""},
        {"text/plain; charset=", ""},
        {"text/plain; charset=\"", "\""},
        {"charset=utf-8", ""},
        {";;;charset=x", "x"},
    };
    for (const auto& [type, expected] : table) {
        EXPECT_EQ(charsetOf(type), expected) << type;
    }
}

TEST(TextDecodingTest, ConvertsToUTF8) {
    EXPECT_EQ(decodedText("abc", "utf-8"), "abc");
    EXPECT_EQ(decodedText("abc", "US-ASCII"), "abc");
    EXPECT_EQ(decodedText("\xE4\xF6", "ISO-8859-1"), "\xC3\xA4\xC3\xB6");
    EXPECT_EQ(decodedText("\x80", "windows-1252"), "\xE2\x82\xAC");
    EXPECT_EQ(decodedText(std::string_view("\0a\xD8\x3D\xDE\x00", 6), "UTF-16BE"),
              "a\xF0\x9F\x98\x80");
    EXPECT_EQ(decodedText("\x93\xFA\x96\x7B", "Shift_JIS"), "\xE6\x97\xA5\xE6\x9C\xAC");
    EXPECT_EQ(decodedText("\x1B$BF|K\\\x1B(B", "ISO-2022-JP"), "\xE6\x97\xA5\xE6\x9C\xAC");
    EXPECT_EQ(decodedText("", "utf-8"), "");
    EXPECT_EQ(decodedText(std::string_view("a\0b", 3), "utf-8"), std::string("a\0b", 3));
}

TEST(TextDecodingTest, KeepsTheLastCharacterOfSetsThatHoldItBack) {
    // Might be the first half of a pair, so that the converter waits for more.
    EXPECT_EQ(decodedText("a\x88\x66", "BIG5-HKSCS"), "a\xC3\x8A");
    EXPECT_EQ(decodedText("a\xA2", "TCVN5712-1"), "a\xC3\x82") << "not a bare A";
}

TEST(TextDecodingTest, ConvertsLongTexts) {
    const std::string latin(100'001, '\xE4');
    const auto text = decodedText(latin, "latin1");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), 200'002U);
    EXPECT_EQ(text->substr(200'000), "\xC3\xA4");
    std::string utf8;
    for (int i = 0; i < 5000; ++i) {
        utf8 += "\xE2\x82\xAC";
    }
    EXPECT_EQ(decodedText(utf8, "utf-8"), utf8);
}

TEST(TextDecodingTest, RefusesBytesThatAreNoText) {
    const std::pair<const char*, const char*> table[] = {
        {"\xFF", "utf-8"},     {"abc\xE4", "utf-8"},  {"\xC3", "utf-8"}, {"\xED\xA0\x80", "utf-8"},
        {"\xC0\x80", "utf-8"}, {"\x80", "us-ascii"},  {"a", "UTF-16BE"}, {"\xDC\xDC", "UTF-16BE"},
        {"\x93", "Shift_JIS"}, {"\xE2\x82", "utf-8"},
    };
    for (const auto& [bytes, charset] : table) {
        EXPECT_EQ(decodedText(bytes, charset), std::nullopt) << charset;
    }
    EXPECT_EQ(decodedText(std::string(10'000, 'a') + '\xFF', "utf-8"), std::nullopt);
}

TEST(TextDecodingTest, RefusesSetsItDoesNotKnow) {
    for (const char* charset : {"no-such-set", "\"", "utf-9", "../../x", "utf-8x"}) {
        EXPECT_EQ(decodedText("abc", charset), std::nullopt) << charset;
    }
}

TEST(TextDecodingTest, ASetIsANameWithoutOptions) {
    EXPECT_EQ(decodedText("a\xFF", "utf-8//IGNORE"), std::nullopt);
    EXPECT_EQ(decodedText("a", "utf-8//TRANSLIT"), std::nullopt);
    EXPECT_EQ(decodedText("a", "utf-8/"), std::nullopt);
}

} // namespace KeloAPI
