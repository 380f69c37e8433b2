#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/api/internal/ScrambledCertificates.hpp>
#include <KeloAPI/Settings.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

static_assert(!std::is_default_constructible_v<Certificates>);

namespace {

/// `base64` as the build scrambles it.
std::string scrambled(std::string_view base64) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < base64.size(); ++i) {
        const auto number = static_cast<unsigned char>(base64[i]) ^ ((90U + 7U * i) & 127U);
        text += i == 0 ? "" : " ";
        text += digits[number >> 4U];
        text += digits[number & 15U];
    }
    return text;
}

} // namespace

TEST(CertificatesTest, TheChainHasBothEntriesInTheirOrder) {
    const auto chain = Certificates::chain();
    ASSERT_EQ(chain.size(), Settings::certificates.size());
    EXPECT_FALSE(chain[0] == chain[1]);
    EXPECT_EQ(Certificates::chain(), chain) << "made anew, and the same";
    const std::string_view reversed[] = {Settings::certificates[1], Settings::certificates[0]};
    EXPECT_EQ(certificates(reversed), (std::vector{chain[1], chain[0]}));
}

TEST(CertificatesTest, ADamagedEntryIsLeftOut) {
    const std::string_view good = Settings::certificates[1];
    std::string noNumber(Settings::certificates[0]);
    noNumber[0] = 'x';
    std::string otherByte(Settings::certificates[0]);
    otherByte[4] = otherByte[4] == '1' ? '2' : '1';
    const std::string cutOff(Settings::certificates[0].substr(0, 400 * 3 - 1));
    const std::string noCertificate = scrambled("Zm9vYmFy");
    const std::string noBase64 = scrambled("Zm9vYmF");
    for (const std::string& damaged :
         {noNumber, otherByte, cutOff, noCertificate, noBase64, std::string()}) {
        const std::string_view entries[] = {damaged, good};
        EXPECT_EQ(certificates(entries), std::vector{Certificates::chain().at(1)})
            << damaged.substr(0, 40);
    }
    const std::string_view none[] = {noBase64, noCertificate};
    EXPECT_TRUE(certificates(none).empty());
    EXPECT_TRUE(certificates({}).empty());
}

TEST(CertificatesTest, DecodesItsScrambledTexts) {
    EXPECT_EQ(decoded(scrambled("Zm9vYmFy+/==")), "Zm9vYmFy+/==");
    const std::string longText(1000, 'Q');
    EXPECT_EQ(decoded(scrambled(longText)), longText);
    EXPECT_EQ(decoded("1b"), "A");
    EXPECT_EQ(decoded("1B"), "A");
    EXPECT_EQ(decoded("001b"), "A");
    EXPECT_EQ(decoded("1b 23"), "AB");
    for (const char* text : {"", " ", "1b  23", " 1b", "1g", "g", "0x1b", "-1", "+1", "80", "fff",
                             "1b,23", "1b\n23", "ffffffffffffffffffff"}) {
        EXPECT_EQ(decoded(text), std::nullopt) << text;
    }
}

} // namespace KeloAPI
