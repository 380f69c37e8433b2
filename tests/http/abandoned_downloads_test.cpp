#include "support/TemporaryFolder.hpp"

#include <KeloAPI/http/internal/AbandonedDownloads.hpp>
#include <KeloAPI/http/internal/DownloadFile.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace KeloAPI::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(AbandonedDownloads, KnowsTheNamesItGives) {
    const std::string name = AbandonedDownloads::temporaryName();
    EXPECT_NE(name, AbandonedDownloads::temporaryName());
    EXPECT_TRUE(AbandonedDownloads::isTemporaryName(name));
    for (const std::string& other :
         {name + "x", "x" + name.substr(1), std::string(),
          std::string(".download-0123456789abcdef0123456789abcdeX.part")}) {
        EXPECT_FALSE(AbandonedDownloads::isTemporaryName(other)) << other;
    }
}

TEST(AbandonedDownloads, GoAtTheFirstDownloadBesideThem) {
    const TemporaryFolder folder;
    folder.write(AbandonedDownloads::temporaryName(), "half");
    folder.write("video", "whole");
    { const DownloadFile file(folder.path("other")); }
    EXPECT_THAT(folder.names(), ElementsAre("video"));
    const std::string later = AbandonedDownloads::temporaryName();
    folder.write(later, "half");
    { const DownloadFile file(folder.path("other")); }
    EXPECT_THAT(folder.names(), ElementsAre(later, "video")) << "the folder is looked at once";
}

TEST(AbandonedDownloads, StayAsLongAsTheirProcessLives) {
    const TemporaryFolder folder;
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        DownloadFile file(folder.path("video"));
        file.append("half");
        static_cast<void>(write(ready[1], "x", 1));
        pause();
        _exit(1);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    AbandonedDownloads::clear(folder.path(""));
    EXPECT_EQ(folder.names().size(), 1U) << "another process is writing it";
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(folder.names().size(), 1U) << "it could not clean up";
    AbandonedDownloads::clear(folder.path());
    EXPECT_THAT(folder.names(), IsEmpty());
    close(ready[0]);
    close(ready[1]);
}

TEST(AbandonedDownloads, AreNotThoseOfThisProcess) {
    const TemporaryFolder folder;
    DownloadFile file(folder.path("video"));
    EXPECT_TRUE(file.append("whole"));
    AbandonedDownloads::clear(folder.path() + "/./");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(folder.read("video"), "whole");
}

TEST(AbandonedDownloads, AreMadeAnewWhereTheyWereTakenBeforeTheirLock) {
    const TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) {
        for (int i = 0; i < 1'000; ++i) {
            AbandonedDownloads::clear(folder.path());
        }
        _exit(0);
    }
    for (int i = 0; i < 3'000; ++i) {
        const std::string path = folder.path(AbandonedDownloads::temporaryName());
        const int file = AbandonedDownloads::create(path);
        ASSERT_GE(file, 0);
        ASSERT_EQ(access(path.c_str(), F_OK), 0) << "after " << i;
        unlink(path.c_str());
        close(file);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(AbandonedDownloads, AreClearedOnceTheirFolderIsThere) {
    const TemporaryFolder folder;
    const std::string later = folder.path("later");
    EXPECT_FALSE(AbandonedDownloads::clear(later));
    AbandonedDownloads::clearOnce(later);
    std::filesystem::create_directory(later);
    folder.write("later/" + AbandonedDownloads::temporaryName(), "half");
    AbandonedDownloads::clearOnce(later);
    EXPECT_TRUE(std::filesystem::is_empty(later));
}

} // namespace KeloAPI::testing
