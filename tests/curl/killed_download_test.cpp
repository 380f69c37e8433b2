#include "NginxTest.hpp"
#include "support/Process.hpp"
#include "support/Sanitizers.hpp"
#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>

namespace KeloAPI::testing {
namespace {

using ::testing::ElementsAre;

class KilledDownloadTest : public NginxTest {
protected:
    void SetUp() override {
        NginxTest::SetUp();
        for (std::size_t i = 0; whole.size() < std::size_t{8} << 20U; ++i) {
            whole += std::to_string(i);
        }
        if (nginx) {
            std::ofstream(nginx->files() / "video.mp4", std::ios::binary) << whole;
        }
    }

    std::vector<std::string> download() const {
        return {KELO_DOWNLOAD_ONCE, nginx->url("/files/video.mp4"), certificate,
                folder.path("video.mp4")};
    }

    std::size_t written() const {
        std::size_t size = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            std::error_code gone; // renamed meanwhile
            const auto bytes = entry.file_size(gone);
            size += gone ? 0 : static_cast<std::size_t>(bytes);
        }
        return size;
    }

    TemporaryFolder certificates;
    std::string certificate = certificates.write("certificate.pem", leaf.pem());
    TemporaryFolder folder;
    std::string whole;
};

TEST_F(KilledDownloadTest, NeverLeavesAHalfFileAHundredTimes) {
    constexpr int all = isSanitized ? 20 : 100;
    int killed = 0;
    int withLitter = 0;
    int complete = 0;
    for (int i = 0; i < all; ++i) {
        Process process(download());
        // From the first steps of the process to the last bytes of the file.
        const std::size_t wanted = whole.size() * static_cast<std::size_t>(i % 10) / 9;
        while (written() < wanted && !process.hasEnded()) {
        }
        process.signal(SIGKILL);
        killed += process.wait() == 1000 + SIGKILL ? 1 : 0;
        const auto names = folder.names();
        withLitter += names.empty() || names == std::vector<std::string>{"video.mp4"} ? 0 : 1;
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

    EXPECT_EQ(Process(download()).wait(), 0);
    EXPECT_THAT(folder.names(), ElementsAre("video.mp4"));
    EXPECT_EQ(folder.read("video.mp4"), whole);
}

} // namespace
} // namespace KeloAPI::testing
