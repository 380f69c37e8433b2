#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/http/Certificate.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

Certificate first() {
    return Certificates::chain().at(0);
}

} // namespace

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

} // namespace KeloAPI::testing
