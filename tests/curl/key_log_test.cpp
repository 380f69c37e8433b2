#include "TrustTest.hpp"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <sstream>

/// libcurl reads `SSLKEYLOGFILE` once, when it is initialised: so each case has a process of its
/// own.
namespace KeloAPI::testing {
namespace {

class KeyLogTest : public TrustTest {
protected:
    void SetUp() override {
        serve(leaf);
        trustBySystem(leaf);
    }
    void TearDown() override {
        unsetenv("SSLKEYLOGFILE");
        TrustTest::TearDown();
    }

    /// Downloads from the server, which download-once pins by the name localhost; returns how the
    /// process ended.
    int download(const std::string& host) const {
        const std::string url = server->url("/", host);
        const TemporaryFile certificate(leaf.pem());
        const TemporaryFile destination("");
        setenv("SSLKEYLOGFILE", log.path().c_str(), 1);
        const std::array<const char*, 5> arguments = {KELO_DOWNLOAD_ONCE, url.c_str(),
                                                      certificate.path().c_str(),
                                                      destination.path().c_str(), nullptr};
        pid_t process = -1;
        int status = -1;
        if (posix_spawn(&process, KELO_DOWNLOAD_ONCE, nullptr, nullptr,
                        const_cast<char* const*>(arguments.data()), environ) == 0) {
            ::waitpid(process, &status, 0);
        }
        return status;
    }

    std::string logged() const {
        std::ostringstream text;
        text << std::ifstream(log.path()).rdbuf();
        return text.str();
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TemporaryFile log{""};
};

TEST_F(KeyLogTest, SecretsOfPinnedConnectionsStayInTheProcess) {
    EXPECT_EQ(download("localhost"), 0);
    EXPECT_EQ(server->requests(), 1);
    EXPECT_EQ(logged(), "");
}

TEST_F(KeyLogTest, OtherConnectionsHonourTheVariable) {
    EXPECT_EQ(download("127.0.0.1"), 0);
    EXPECT_EQ(server->requests(), 1);
    EXPECT_NE(logged().find("CLIENT_"), std::string::npos) << logged();
}

} // namespace
} // namespace KeloAPI::testing
