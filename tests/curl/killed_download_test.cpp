#include "support/Nginx.hpp"
#include "support/Sanitizers.hpp"
#include "support/TemporaryFile.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

#include <gmock/gmock.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <thread>

namespace KeloAPI::testing {
namespace {

using ::testing::ElementsAre;

class KilledDownloadTest : public TransportTest {
protected:
    void SetUp() override {
        if (!Nginx::isInstalled()) {
            GTEST_SKIP() << "nginx is not installed";
        }
        nginx = std::make_unique<Nginx>(leaf);
        ASSERT_TRUE(nginx->isServing());
        for (std::size_t i = 0; whole.size() < std::size_t{8} << 20U; ++i) {
            whole += std::to_string(i);
        }
        std::ofstream(nginx->files() / "video.mp4", std::ios::binary) << whole;
    }

    pid_t start() const {
        const std::string url = nginx->url("/files/video.mp4");
        const std::string destination = folder.path("video.mp4");
        const std::array<const char*, 5> arguments = {KELO_DOWNLOAD_ONCE, url.c_str(),
                                                      certificate.path().c_str(),
                                                      destination.c_str(), nullptr};
        pid_t process = -1;
        posix_spawn(&process, KELO_DOWNLOAD_ONCE, nullptr, nullptr,
                    const_cast<char* const*>(arguments.data()), environ);
        return process;
    }

    /// Waits until the process has written so much of the file, or has ended.
    void awaitBytes(pid_t process, std::size_t wanted) const {
        siginfo_t ended{};
        const auto written = [&] {
            std::size_t size = 0;
            for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
                std::error_code gone; // renamed meanwhile
                const auto bytes = entry.file_size(gone);
                size += gone ? 0 : static_cast<std::size_t>(bytes);
            }
            return size;
        };
        while (written() < wanted && ended.si_pid == 0) {
            ::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT);
        }
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TemporaryFile certificate{leaf.pem()};
    TemporaryFolder folder;
    std::unique_ptr<Nginx> nginx;
    std::string whole;
};

TEST_F(KilledDownloadTest, NeverLeavesAHalfFileAHundredTimes) {
    constexpr int all = isSanitized ? 20 : 100;
    int killed = 0;
    int withLitter = 0;
    int complete = 0;
    for (int i = 0; i < all; ++i) {
        const pid_t process = start();
        ASSERT_GT(process, 0);
        // From the first steps of the process to the last bytes of the file.
        awaitBytes(process, whole.size() * static_cast<std::size_t>(i % 10) / 9);
        ::kill(process, SIGKILL);
        int status = 0;
        ::waitpid(process, &status, 0);
        killed += WIFSIGNALED(status) ? 1 : 0;
        const auto names = folder.names();
        withLitter += names.empty() || (names.size() == 1 && names[0] == "video.mp4") ? 0 : 1;
        // Each start clears what the killed ones left.
        EXPECT_LE(names.size(), 2U) << "after " << i << " kills";
        if (std::filesystem::exists(folder.path("video.mp4"))) {
            ++complete;
            ASSERT_EQ(folder.read("video.mp4"), whole) << "after " << i << " kills";
            std::filesystem::remove(folder.path("video.mp4"));
        }
    }
    EXPECT_GT(killed, all / 2);
    EXPECT_GT(withLitter, 0) << "no download was killed in the midst of it";
    std::printf("%d kills: %d in the midst of the file, %d after it was complete\n", killed,
                withLitter, complete);

    const pid_t last = start();
    int status = 0;
    ::waitpid(last, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(folder.names(), ElementsAre("video.mp4"));
    EXPECT_EQ(folder.read("video.mp4"), whole);
}

} // namespace
} // namespace KeloAPI::testing
