#include "NginxTest.hpp"
#include "support/Process.hpp"
#include "support/Sanitizers.hpp"

#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPI/http/internal/AbandonedDownloads.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

namespace KeloAPI::testing {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

/// A file of an nginx, downloaded by processes that pin it.
class DownloadingProcessTest : public NginxTest {
protected:
    void SetUp() override {
        NginxTest::SetUp();
        if (nginx) {
            std::ofstream(nginx->files() / "video.mp4", std::ios::binary) << whole;
        }
    }

    std::vector<std::string> download(const std::string& destination) const {
        return {KELO_DOWNLOAD_ONCE, nginx->url("/files/video.mp4"), certificate, destination};
    }

    TemporaryFolder certificates;
    std::string certificate = certificates.write("certificate.pem", leaf.pem());
    const std::string whole = std::string(300'000, 'v') + "end";
};

class SharedCacheTest : public DownloadingProcessTest {
protected:
    SharedCacheTest() {
        Diagnostics::setSink([this](std::string_view line) { lines.emplace_back(line); });
        manager->setDocumentsDirectory(folder.path() + "/");
    }
    ~SharedCacheTest() override {
        manager->kill();
        Diagnostics::setSink({});
    }

    /// Another file of the folder each time.
    void downloadInTurns(int times) const {
        for (int i = 0; i < times; ++i) {
            const std::string name = "video" + std::to_string(i % names);
            EXPECT_EQ(Process(download(folder.path(name))).wait(), 0);
        }
    }

    /// A file that is there is whole, whoever removes it or puts another in its place meanwhile.
    void expectWholeFiles() const {
        for (const std::string& name : folder.names()) {
            if (!AbandonedDownloads::isTemporaryName(name)) {
                EXPECT_THAT(folder.read(name), AnyOf(whole, "")) << name;
            }
        }
    }

    static constexpr int names = 10;
    static constexpr int kept = 3;
    TemporaryFolder folder;
    std::shared_ptr<FileManager> manager = FileManager::sharedGroupManager("/shared/");
    std::vector<std::string> lines;
};

TEST_F(SharedCacheTest, TwoProcessesDownloadIntoItWhileAThirdTrims) {
    constexpr int downloads = isSanitized ? 20 : 60;
    std::atomic<int> atWork = 2;
    std::vector<std::thread> downloaders;
    downloaders.reserve(2);
    for (int i = 0; i < 2; ++i) {
        downloaders.emplace_back([&] {
            downloadInTurns(downloads);
            --atWork;
        });
    }
    while (atWork > 0) {
        manager->cleanDirectory(kept);
        expectWholeFiles();
    }
    for (std::thread& downloader : downloaders) {
        downloader.join();
    }
    manager->cleanDirectory(kept);
    EXPECT_EQ(folder.names().size(), std::size_t{kept + 1}) << "the newest, and one more";
    for (const std::string& name : folder.names()) {
        EXPECT_EQ(folder.read(name), whole) << name;
    }
    EXPECT_THAT(lines, ::testing::IsEmpty());
}

/// A disk in memory, which a process has for itself.
class OtherDiskTest : public DownloadingProcessTest {
protected:
    void SetUp() override {
        DownloadingProcessTest::SetUp();
        if (nginx && Process(onDisk("true", "")).wait() != 0) {
            GTEST_SKIP() << "no disk can be mounted here";
        }
    }

    /// Mounts it over `place`, puts an old video there, runs the command, and tells what is there
    /// in the end.
    std::vector<std::string> onDisk(const std::string& before, const std::string& command) const {
        const std::string script = "mount -t tmpfs -o size=200k none '" + place.path() +
                                   "' && cd '" + place.path() + "' && echo old >video.mp4 && " +
                                   before + " || exit 1\n" + command + "\nls -A; cat video.mp4";
        return {"/usr/bin/unshare", "--map-root-user", "--mount", "sh", "-c", script};
    }

    /// What a download into it tells, and what is there then, line by line.
    std::vector<std::string> toldAndLeft(const std::string& before) const {
        std::string command;
        for (const std::string& word : download(place.path("video.mp4"))) {
            command += '\'' + word + "' ";
        }
        const Process process(onDisk(before, command + "2>&1"));
        std::vector<std::string> said;
        for (std::string line = process.readLine(); !line.empty(); line = process.readLine()) {
            said.push_back(line);
        }
        return said;
    }

    TemporaryFolder place;
};

TEST_F(OtherDiskTest, WhenItIsFullTheDownloadFailsAndWhatWasThereStays) {
    EXPECT_THAT(toldAndLeft("true"),
                ::testing::ElementsAre(HasSubstr("No space left on device"), "video.mp4", "old"));
}

TEST_F(OtherDiskTest, WhenItMayOnlyBeReadTheDownloadFailsAndWhatWasThereStays) {
    EXPECT_THAT(toldAndLeft("mount -o remount,ro ."),
                ::testing::ElementsAre(HasSubstr("Read-only file system"), "video.mp4", "old"));
}

} // namespace
} // namespace KeloAPI::testing
