#include <KeloAPI/api/internal/Base64.hpp>

#include <gtest/gtest.h>

#include <array>

namespace KeloAPI {

TEST(Base64Test, DecodesAndEncodesTheStandardsVectorsAndBytesOfAllKinds) {
    const std::pair<const char*, std::string> table[] = {
        {"", ""},
        {"Zg==", "f"},
        {"Zm8=", "fo"},
        {"Zm9v", "foo"},
        {"Zm9vYg==", "foob"},
        {"Zm9vYmE=", "fooba"},
        {"Zm9vYmFy", "foobar"},
        {"AAAA", std::string(3, '\0')},
        {"AA==", std::string(1, '\0')},
        {"////", "\xFF\xFF\xFF"},
        {"+/+/", "\xFB\xFF\xBF"},
    };
    for (const auto& [text, bytes] : table) {
        EXPECT_EQ(base64Decoded(text), bytes) << text;
        EXPECT_EQ(base64Encoded(bytes), text) << text;
    }
}

TEST(Base64Test, DecodesTheWholeAlphabet) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t value = 0; value < alphabet.size(); ++value) {
        const auto bytes = base64Decoded(std::string("AAA") + alphabet[value]);
        EXPECT_EQ(bytes, std::string(2, '\0') + static_cast<char>(value));
    }
}

TEST(Base64Test, RefusesWhatIsNotBase64) {
    for (const char* text :
         {"Z",    "Zg",   "Zg=",  "Zm9",  "Zm9vY",    "=",        "==",     "===",
          "====", "Z===", "=Zg=", "Z=g=", "Zg==Zg==", "Zm8=Zm8=", "Zm9v\n", "Zm9v\nYg==",
          " Zg=", "Zg= ", "Zm9-", "Zm9_", "Zm9\x80",  "Zm9@",     "Zm9[",   "Zm9`",
          "Zm9{", "Zm9:", "Zm9.", "Zm9*", "Zm9,"}) {
        EXPECT_EQ(base64Decoded(text), std::nullopt) << text;
    }
    EXPECT_EQ(base64Decoded(std::string_view("Zm9\0", 4)), std::nullopt);
}

TEST(Base64Test, TheBufferFormWritesWhereItIsTold) {
    std::array<unsigned char, 6> buffer{};
    buffer.fill(0xEE);
    EXPECT_EQ(base64DecodedBuffer("Zm9vYg==", 8, buffer.data()), 4U);
    EXPECT_EQ(buffer[0], 'f');
    EXPECT_EQ(buffer[3], 'b');
    EXPECT_EQ(buffer[4], 0xEE) << "padding decodes into nothing";
    EXPECT_EQ(base64DecodedBuffer("", 0, buffer.data()), 0U);
    EXPECT_EQ(base64DecodedBuffer("Zm9", 3, buffer.data()), std::nullopt);
    static_assert(base64DecodedLength(0) == 0);
    static_assert(base64DecodedLength(8) == 6);
}

} // namespace KeloAPI
