#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/api/internal/ScrambledCertificates.hpp>
#include <KeloAPI/http/Certificate.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>
#include <KeloAPI/Settings.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

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

Certificate first() {
    return Certificates::chain().at(0);
}

} // namespace

TEST(CertificatesTest, TheChainHasBothEntriesInTheirOrder) {
    const auto chain = Certificates::chain();
    ASSERT_EQ(chain.size(), 2U);
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

TEST(CertificateTest, GoesFromDERToPEMAndBack) {
    const Certificate certificate = first();
    const std::string pem = certificate.pem();
    EXPECT_TRUE(pem.starts_with("-----BEGIN CERTIFICATE-----\n"));
    EXPECT_TRUE(pem.ends_with("-----END CERTIFICATE-----\n"));
    EXPECT_EQ(Certificate::fromDER(Data(std::string(certificate.der().text()))), certificate);
    EXPECT_EQ(Certificate::fromPEM("subject=x\n" + pem + Certificates::chain()[1].pem()),
              certificate)
        << "the first one of a text";
}

TEST(CertificateTest, RefusesBytesThatAreNone) {
    const std::string der(first().der().text());
    EXPECT_FALSE(Certificate::fromDER(Data()));
    EXPECT_FALSE(Certificate::fromDER(Data("garbage")));
    EXPECT_FALSE(Certificate::fromDER(Data(der + "x"))) << "something behind it";
    EXPECT_FALSE(Certificate::fromDER(Data(der + '\0')));
    EXPECT_FALSE(Certificate::fromDER(Data(der + der)));
    EXPECT_FALSE(Certificate::fromDER(Data("x" + der)));
    for (std::size_t size = 0; size < der.size(); size += 7) {
        EXPECT_FALSE(Certificate::fromDER(Data(der.substr(0, size))));
    }
    for (const char* pem :
         {"", "garbage", "-----BEGIN CERTIFICATE-----\n-----END CERTIFICATE-----\n",
          "-----BEGIN CERTIFICATE-----\nZm9v\n-----END CERTIFICATE-----\n",
          "-----BEGIN CERTIFICATE-----\n????\n-----END CERTIFICATE-----\n"}) {
        EXPECT_FALSE(Certificate::fromPEM(pem)) << pem;
    }
    EXPECT_FALSE(Certificate::fromPEM(first().pem().substr(0, 200)));
}

namespace {

/// How many certificates are pinned for the host; -1 where the system's store decides.
int pinsAt(const ServerTrustPolicyManager& manager, const std::string& host) {
    const auto* policy = manager.policyFor(URL::parse("https://" + host + "/").value());
    const auto* pins = policy == nullptr ? nullptr : std::get_if<PinCertificates>(policy);
    return pins == nullptr ? -1 : static_cast<int>(pins->certificates.size());
}

/// Pins two certificates, so that an empty list is told from them.
ServerTrustPolicyManager pinningTwo(const std::string& host) {
    return ServerTrustPolicyManager({{host, PinCertificates{Certificates::chain()}}});
}

} // namespace

TEST(ServerTrustPolicyTest, IsThatOfTheHostAlone) {
    const auto manager = pinningTwo("service.example");
    EXPECT_EQ(pinsAt(manager, "service.example"), 2);
    for (const char* other :
         {"example", "a.service.example", "service.example.org", "service", "xservice.example"}) {
        EXPECT_EQ(pinsAt(manager, other), -1) << other;
    }
    EXPECT_EQ(pinsAt(ServerTrustPolicyManager(), "service.example"), -1);
}

TEST(ServerTrustPolicyTest, IgnoresCaseAndWhatStandsBesideTheHost) {
    for (const char* listed : {"LocalHost.:8443", "localhost:", "u:p@localhost/a:b:c@d#e:f"}) {
        const auto manager = pinningTwo(listed);
        EXPECT_EQ(pinsAt(manager, "u:p:q@LocalHost:"), 2) << listed;
        EXPECT_EQ(pinsAt(manager, "d"), -1) << listed;
    }
    for (const char* listed : {"::1", "[::1]", "u:p@[0:0:0:0:0:0:0:1]:8443"}) {
        const auto manager = pinningTwo(listed);
        EXPECT_EQ(pinsAt(manager, "u:p@[0::0.0.0.1]:9"), 2) << listed;
        EXPECT_EQ(pinsAt(manager, "[::2]"), -1) << listed;
    }
}

TEST(ServerTrustPolicyTest, AHostThatIsNotUnderstoodIsRefused) {
    for (const char* host : {"", "u:p@", "local%68ost", "127.1", "[v1.a]"}) {
        EXPECT_EQ(pinsAt(ServerTrustPolicyManager(), host), 0) << host;
        EXPECT_EQ(pinsAt(pinningTwo("localhost"), host), 0) << host;
    }
}

TEST(ServerTrustPolicyTest, AnEntryThatIsNotUnderstoodRefusesEveryHost) {
    for (const char* listed : {"", "a@b@localhost", "u:p@::1", "[::1", "::1]", "local%68ost",
                               "127.1", "not a host", "?x", "/localhost", "\xEF\xBD\x8Cocalhost"}) {
        const auto certificates = PinCertificates{Certificates::chain()};
        const ServerTrustPolicyManager manager(
            {{listed, certificates}, {"service.example", certificates}});
        for (const char* asked : {"localhost", "service.example", "[::1]", "elsewhere.example"}) {
            EXPECT_EQ(pinsAt(manager, asked), 0) << listed << ' ' << asked;
        }
    }
}

TEST(ServerTrustPolicyTest, EveryHostHasItsOwn) {
    const ServerTrustPolicyManager manager(
        {{"a", PerformDefaultEvaluation{}}, {"b", PinCertificates{Certificates::chain()}}});
    const auto* ofA = manager.policyFor(URL::parse("https://a").value());
    ASSERT_NE(ofA, nullptr);
    EXPECT_TRUE(std::holds_alternative<PerformDefaultEvaluation>(*ofA));
    EXPECT_EQ(pinsAt(manager, "b"), 2);
    EXPECT_EQ(pinsAt(manager, "c"), -1);
}

} // namespace KeloAPI::testing
