#include "support/OwnProcess.hpp"
#include "support/Shortage.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/AbandonedDownloads.hpp>
#include <KeloAPI/http/internal/DownloadFile.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace KeloAPI::testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class DownloadFileTest : public ::testing::Test {
protected:
    void expectCannotWrite(const DownloadFile& file, const char* name, int reason) const {
        ASSERT_TRUE(file.error());
        EXPECT_TRUE(isHTTPError(*file.error(), HTTPErrorCode::CannotWriteFile));
        EXPECT_THAT(file.error()->localizedDescription(), HasSubstr(folder.path(name)));
        ASSERT_TRUE(file.error()->underlying());
        EXPECT_EQ(file.error()->underlying()->code(), reason);
        EXPECT_EQ(file.error()->underlying()->localizedDescription(), std::strerror(reason));
    }

    TemporaryFolder folder;
};

TEST_F(DownloadFileTest, TakesItsPlaceOnCommitOnly) {
    folder.write("video", "old");
    {
        DownloadFile file(folder.path("video"));
        EXPECT_TRUE(file.append("new "));
        EXPECT_TRUE(file.append("content"));
        EXPECT_EQ(folder.read("video"), "old");
        EXPECT_THAT(folder.names(),
                    ElementsAre(MatchesRegex("\\.download-[0-9a-f]+\\.part"), "video"))
            << "the temporary file is hidden beside it";
        EXPECT_TRUE(file.commit());
        EXPECT_EQ(folder.read("video"), "new content");
    }
    EXPECT_THAT(folder.names(), ElementsAre("video"));
}

TEST_F(DownloadFileTest, LeavesNoDescriptorOpen) {
    EXPECT_TRUE(DownloadFile(folder.path("first")).commit());
    const std::size_t before = openDescriptors();
    EXPECT_TRUE(DownloadFile(folder.path("kept")).commit());
    { const DownloadFile dropped(folder.path("dropped")); }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(DownloadFileTest, KeepsContentOfEverySize) {
    constexpr std::size_t small = std::size_t{64} << 10U;
    constexpr std::size_t large = std::size_t{512} << 10U;
    for (const std::size_t size : {std::size_t{0}, small - 1, small, small + 1, 2 * small,
                                   large - 1, large, large + 1, 2 * large, 3 * large + small + 1}) {
        std::string content(size, '\0');
        for (std::size_t at = 0; at < size; ++at) {
            content[at] = static_cast<char>(at % 251);
        }
        for (const std::size_t run : {std::size_t{4'093}, small, size + 1}) {
            SCOPED_TRACE(std::to_string(size) + " bytes in runs of " + std::to_string(run));
            DownloadFile file(folder.path("video"));
            EXPECT_TRUE(file.append(""));
            for (std::size_t at = 0; at < size; at += run) {
                EXPECT_TRUE(file.append(std::string_view(content).substr(at, run)));
            }
            EXPECT_TRUE(file.commit());
            EXPECT_THAT(folder.names(), ElementsAre("video"));
            EXPECT_TRUE(folder.read("video") == content);
        }
    }
}

TEST_F(DownloadFileTest, HasTheRightsOfAnOrdinaryFile) {
    const mode_t mask = umask(027);
    {
        DownloadFile file(folder.path("video"));
        EXPECT_TRUE(file.commit());
    }
    EXPECT_EQ(umask(mask), 027U) << "the process's mask is left alone";
    struct stat status {};
    ASSERT_EQ(stat(folder.path("video").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(DownloadFileTest, SeveralMayGrowForOneDestination) {
    DownloadFile one(folder.path("video"));
    DownloadFile two(folder.path("video"));
    EXPECT_TRUE(one.append("one") && two.append("two"));
    EXPECT_TRUE(two.commit());
    EXPECT_EQ(folder.read("video"), "two");
    EXPECT_TRUE(one.commit());
    EXPECT_EQ(folder.read("video"), "one");
    EXPECT_THAT(folder.names(), ElementsAre("video"));
}

TEST_F(DownloadFileTest, CannotBeWrittenIntoAFolderWithoutRights) {
    folder.write("video", "old");
    // In a process of its own, because the administrator has to become somebody else for it.
    EXPECT_EXIT(
        {
            const bool bound =
                chmod(folder.path("").c_str(), 0500) == 0 && (geteuid() != 0 || setuid(65534) == 0);
            DownloadFile file(folder.path("video"));
            expectCannotWrite(file, "video", EACCES);
            exit(bound && !file.append("x") && !HasFailure() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_THAT(folder.names(), ElementsAre("video"));
    EXPECT_EQ(folder.read("video"), "old");
}

TEST_F(DownloadFileTest, CannotBeCommittedWhenItsFolderHasGoneOrIsNone) {
    ASSERT_EQ(mkdir(folder.path("sub").c_str(), 0700), 0);
    DownloadFile file(folder.path("sub/video"));
    EXPECT_TRUE(file.append("x"));
    std::filesystem::remove_all(folder.path("sub"));
    EXPECT_FALSE(file.commit());
    expectCannotWrite(file, "sub/video", ENOENT);
    folder.write("regular", "file");
    expectCannotWrite(DownloadFile(folder.path("missing/video")), "missing/video", ENOENT);
    expectCannotWrite(DownloadFile(folder.path("regular/video")), "regular/video", ENOTDIR);
    EXPECT_THAT(folder.names(), ElementsAre("regular"));
    EXPECT_EQ(folder.read("regular"), "file");
}

TEST_F(DownloadFileTest, ReplacesALinkAndNotWhatItPointsTo) {
    folder.write("target", "target");
    std::filesystem::create_symlink("target", folder.path("video"));
    DownloadFile file(folder.path("video"));
    EXPECT_TRUE(file.append("new"));
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(folder.read("target"), "target");
    EXPECT_FALSE(std::filesystem::is_symlink(folder.path("video")));
    EXPECT_EQ(folder.read("video"), "new");
}

TEST_F(DownloadFileTest, SaysWhenTheDiskIsFull) {
    folder.write("video", "old");
    // No disk to fill here: the limit of a file's size stands in, in a process of its own.
    EXPECT_EXIT(
        {
            signal(SIGXFSZ, SIG_IGN);
            bool told = false;
            {
                const LoweredLimit fileSize(RLIMIT_FSIZE, 100'000);
                DownloadFile file(folder.path("video"));
                const bool taken = file.append(std::string(1'000'000, 'x'));
                expectCannotWrite(file, "video", EFBIG);
                told = !taken && !file.append("x") && !file.commit();
            }
            const bool asItWas = folder.read("video") == "old" &&
                                 folder.names() == std::vector<std::string>{"video"};
            exit(told && asItWas && !HasFailure() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(DownloadFileTest, GoesToTheDiskInWholeBlocks) {
    constexpr std::size_t block = std::size_t{64} << 10U;
    DownloadFile file(folder.path("video"));
    EXPECT_TRUE(file.append(std::string(block - 1, 'x')));
    const std::string temporary = folder.names().at(0);
    EXPECT_EQ(folder.read(temporary).size(), 0U);
    EXPECT_TRUE(file.append("x"));
    EXPECT_EQ(folder.read(temporary).size(), block);
}

TEST_F(DownloadFileTest, MayHaveTheDescriptorOfAStandardInputThatIsClosed) {
    EXPECT_EXIT(
        {
            close(STDIN_FILENO);
            bool isKept = false;
            {
                const DownloadFile file(folder.path("video"));
                AbandonedDownloads::clear(folder.path());
                isKept = folder.names().size() == 1 && access("/proc/self/fd/0", F_OK) == 0;
            }
            exit(isKept && folder.names().empty() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

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

TEST(AbandonedDownloads, LeaveNoDescriptorOpen) {
    const TemporaryFolder folder;
    const DownloadFile kept(folder.path("video"));
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 3; ++i) {
        folder.write(AbandonedDownloads::temporaryName(), "half");
        EXPECT_TRUE(AbandonedDownloads::clear(folder.path()));
    }
    EXPECT_EQ(openDescriptors(), before);
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
