#include <KeloAPI/api/internal/Base64.hpp>

#include <gtest/gtest.h>

#include <array>

namespace KeloAPI {

TEST(Base64Test, DecodesTheStandardsVectors) {
    EXPECT_EQ(base64Decoded(""), "");
    EXPECT_EQ(base64Decoded("Zg=="), "f");
    EXPECT_EQ(base64Decoded("Zm8="), "fo");
    EXPECT_EQ(base64Decoded("Zm9v"), "foo");
    EXPECT_EQ(base64Decoded("Zm9vYg=="), "foob");
    EXPECT_EQ(base64Decoded("Zm9vYmE="), "fooba");
    EXPECT_EQ(base64Decoded("Zm9vYmFy"), "foobar");
}

TEST(Base64Test, DecodesTheWholeAlphabet) {
    const auto bytes =
        base64Decoded("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    ASSERT_TRUE(bytes);
    ASSERT_EQ(bytes->size(), 48U);
    // The 64 values in order: read back six bits at a time.
    for (unsigned value = 0; value < 64; ++value) {
        const unsigned bit = value * 6;
        const auto high = static_cast<unsigned char>((*bytes)[bit / 8]);
        const auto low =
            bit / 8 + 1 < bytes->size() ? static_cast<unsigned char>((*bytes)[bit / 8 + 1]) : 0U;
        const unsigned sixteen = (static_cast<unsigned>(high) << 8U) | low;
        EXPECT_EQ((sixteen >> (10U - bit % 8)) & 63U, value);
    }
}

TEST(Base64Test, DecodesBytesOfAllKinds) {
    EXPECT_EQ(base64Decoded("AAAA"), std::string(3, '\0'));
    EXPECT_EQ(base64Decoded("////"), "\xFF\xFF\xFF");
    EXPECT_EQ(base64Decoded("+/+/"), "\xFB\xFF\xBF");
    EXPECT_EQ(base64Decoded("AA=="), std::string(1, '\0'));
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
