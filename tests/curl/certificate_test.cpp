#include "support/TestCertificates.hpp"

#include <gtest/gtest.h>

namespace KeloAPI::testing {
namespace {

TEST(CertificateTest, IsMadeFromDERAndGivesItBack) {
    const TestCertificate made = TestCertificate::authority();
    const Certificate certificate = made.certificate();
    const auto again = Certificate::fromDER(Data(std::string(certificate.der().text())));
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, certificate);
    EXPECT_FALSE(*again == TestCertificate::authority().certificate());
}

TEST(CertificateTest, TextFormReadsBack) {
    const Certificate certificate = TestCertificate::authority().certificate();
    const std::string pem = certificate.pem();
    EXPECT_TRUE(pem.starts_with("-----BEGIN CERTIFICATE-----\n"));
    EXPECT_TRUE(pem.ends_with("-----END CERTIFICATE-----\n"));
    const auto again = Certificate::fromPEM(pem);
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, certificate);
}

TEST(CertificateTest, BytesThatAreNoCertificateAreRefused) {
    const std::string der(TestCertificate::authority().certificate().der().text());
    EXPECT_FALSE(Certificate::fromDER(Data()));
    EXPECT_FALSE(Certificate::fromDER(Data(std::string("certificate"))));
    EXPECT_FALSE(Certificate::fromDER(Data(der.substr(0, der.size() - 1))));
    EXPECT_FALSE(Certificate::fromDER(Data(der + '\0'))) << "bytes behind the certificate";
    EXPECT_FALSE(Certificate::fromDER(Data(der + der)));
}

TEST(CertificateTest, TextWithoutACertificateIsRefused) {
    const TestCertificate made = TestCertificate::authority();
    EXPECT_FALSE(Certificate::fromPEM(""));
    EXPECT_FALSE(Certificate::fromPEM(made.keyPem()));
    EXPECT_FALSE(Certificate::fromPEM(made.pem().substr(0, 100)));
}

TEST(CertificateTest, TheFirstCertificateOfATextCounts) {
    const TestCertificate first = TestCertificate::authority("first");
    const TestCertificate second = TestCertificate::authority("second");
    const auto read =
        Certificate::fromPEM("words before\n" + first.keyPem() + first.pem() + second.pem());
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, first.certificate());
}

} // namespace
} // namespace KeloAPI::testing
