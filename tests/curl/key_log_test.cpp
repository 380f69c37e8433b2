#include "support/Process.hpp"
#include "TrustTest.hpp"

#include <gmock/gmock.h>

namespace KeloAPI::testing {
namespace {

/// libcurl reads `SSLKEYLOGFILE` once, when it is initialised: each case has a process of its own.
class KeyLogTest : public TrustTest {
protected:
    void SetUp() override {
        serve(leaf);
        trustBySystem(leaf);
        setenv("SSLKEYLOGFILE", folder.path("log").c_str(), 1);
    }
    void TearDown() override {
        unsetenv("SSLKEYLOGFILE");
        TrustTest::TearDown();
    }

    /// Downloads from the server, which download-once pins by the name localhost; what was logged.
    std::string logged(const std::string& host) const {
        const std::string certificate = folder.write("certificate.pem", leaf.pem());
        Process program(
            {KELO_DOWNLOAD_ONCE, server->secureUrl("/", host), certificate, folder.path("file")});
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(server->requests(), 1);
        return folder.read("log");
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TemporaryFolder folder;
};

TEST_F(KeyLogTest, SecretsOfPinnedConnectionsStayInTheProcess) {
    EXPECT_EQ(logged("localhost"), "");
}

TEST_F(KeyLogTest, OtherConnectionsHonourTheVariable) {
    EXPECT_THAT(logged("127.0.0.1"), ::testing::HasSubstr("CLIENT_"));
}

} // namespace
} // namespace KeloAPI::testing
