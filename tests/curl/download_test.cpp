#include "NginxTest.hpp"
#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/Process.hpp"
#include "support/Sanitizers.hpp"
#include "TrustTest.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>

namespace KeloAPI::testing {
namespace {

/// libcurl reads `SSLKEYLOGFILE` once, when it is initialised: each download has a process of its
/// own.
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
        return folder.read("log");
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TemporaryFolder folder;
};

TEST_F(KeyLogTest, SecretsOfPinnedConnectionsStayInTheProcess) {
    EXPECT_EQ(logged("localhost"), "");
    EXPECT_THAT(logged("127.0.0.1"), ::testing::HasSubstr("CLIENT_")) << "others honour it";
    EXPECT_EQ(server->requests(), 2);
}

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
        // In a build that counts what tests reach: a killed process would leave half of its counts
        // among those of the others.
        setenv("GCOV_PREFIX", certificates.path().c_str(), 1);
    }
    void TearDown() override {
        unsetenv("GCOV_PREFIX");
        NginxTest::TearDown();
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
    EXPECT_THAT(folder.names(), ::testing::ElementsAre("video.mp4"));
    EXPECT_EQ(folder.read("video.mp4"), whole);
}

constexpr std::uintmax_t fourGiB = std::uintmax_t{4} << 30U;

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

using LargeDownloadTest = NginxTest;

TEST_F(LargeDownloadTest, OfMoreThanFourGiBKeepsTheMemoryFlat) {
    if (isSanitized) {
        GTEST_SKIP() << "a sanitized program takes minutes for it";
    }
    const TemporaryFolder folder;
    if (std::filesystem::space(folder.path()).available < fourGiB + (fourGiB >> 2U)) {
        GTEST_SKIP() << "there is no room for it";
    }
    // A file with holes, which takes no room, and an end to be recognised by.
    const auto served = nginx->files() / "large.mp4";
    std::ofstream(served, std::ios::binary) << "start";
    std::filesystem::resize_file(served, fourGiB);
    std::ofstream(served, std::ios::binary | std::ios::app) << "end";

    Manager manager(pinning("localhost", {leaf.certificate()}));
    const std::string path = folder.path("large.mp4");
    const long before = peakKilobytes();
    const auto request = manager.download(FixedRequest(nginx->url("/files/large.mp4")),
                                          [&](const HTTPResponse&) { return URL::fileURL(path); });
    std::int64_t received = 0;
    std::int64_t expected = 0;
    request->progress([&](std::int64_t, std::int64_t total, std::int64_t all) {
        received = total;
        expected = all;
    });
    const auto error = errorOf(request, std::chrono::minutes(3));
    ASSERT_FALSE(error) << error->description();
    EXPECT_EQ(received, static_cast<std::int64_t>(fourGiB + 3));
    EXPECT_EQ(expected, received);
    EXPECT_EQ(std::filesystem::file_size(path), fourGiB + 3);
    std::ifstream file(path, std::ios::binary);
    file.seekg(-4, std::ios::end);
    std::string end(4, ' ');
    file.read(end.data(), 4);
    EXPECT_EQ(end, std::string("\0end", 4));
    EXPECT_LT(peakKilobytes() - before, 16 * 1024);
}

} // namespace
} // namespace KeloAPI::testing
