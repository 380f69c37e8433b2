#include "support/TemporaryFolder.hpp"

#include <KeloAPI/files/Application.hpp>
#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPI/http/internal/AbandonedDownloads.hpp>
#include <KeloAPI/http/internal/DownloadFile.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <limits>

namespace KeloAPI::testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

static_assert(!std::is_default_constructible_v<FileManager>);
static_assert(!std::is_constructible_v<FileManager, const char*>);
static_assert(std::is_destructible_v<FileManager>);
static_assert(std::is_invocable_v<decltype(FileManager::sharedGroupManager), const char*>);

class FileManagerTest : public ::testing::Test {
protected:
    FileManagerTest() {
        Diagnostics::setSink([this](std::string_view line) { lines.emplace_back(line); });
        Application::setGroupContainers([this](const std::string& group) {
            asked.push_back(group);
            return container;
        });
    }
    ~FileManagerTest() override {
        FileManager::sharedGroupManager("/videos/")->kill();
        Application::setGroupContainers({});
        Application::setBundleIdentifier(std::nullopt);
        Diagnostics::setSink({});
    }

    std::shared_ptr<FileManager> manager = FileManager::sharedGroupManager("/videos/");

    /// Files of the ages 1, 2, ... hours, the oldest last.
    void fill(const std::vector<std::string>& names) {
        const auto& directory = manager->documentsDirectory();
        ASSERT_TRUE(directory);
        auto age = std::chrono::hours(0);
        for (const std::string& name : names) {
            folder.write("videos/" + name, name);
            std::filesystem::last_write_time(*directory + name,
                                             std::filesystem::file_time_type::clock::now() - ++age);
        }
    }
    std::vector<std::string> left() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path("videos"))) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    TemporaryFolder folder;
    std::optional<URL> container = URL::fileURL(folder.path());
    std::vector<std::string> asked;
    std::vector<std::string> lines;
};

TEST_F(FileManagerTest, IsOneForEachPathUntilItIsKilled) {
    EXPECT_EQ(FileManager::sharedGroupManager("/videos/"), manager);
    const auto other = FileManager::sharedGroupManager("/videos");
    EXPECT_NE(other, manager);
    EXPECT_EQ(other->relativePath(), "/videos");
    other->kill();
    manager->documentsDirectory();
    manager->kill();
    const auto fresh = FileManager::sharedGroupManager("/videos/");
    EXPECT_NE(fresh, manager);
    container = std::nullopt;
    EXPECT_FALSE(fresh->documentsDirectory()) << "its directory is looked for anew";
    EXPECT_TRUE(manager->documentsDirectory()) << "the old one lives on";
    manager->kill();
    EXPECT_NE(FileManager::sharedGroupManager("/videos/"), fresh) << "by key, not by identity";
    // The registry may hold the last reference.
    FileManager::sharedGroupManager("/last/").get()->kill();
    const auto last = FileManager::sharedGroupManager("/last/");
    EXPECT_EQ(last->relativePath(), "/last/");
    last->kill();
}

TEST_F(FileManagerTest, MakesTheDirectoryAtTheFirstAsking) {
    EXPECT_TRUE(asked.empty());
    EXPECT_EQ(manager->documentsDirectory(), folder.path() + "/videos/");
    EXPECT_TRUE(std::filesystem::is_directory(folder.path("videos")));
    manager->documentsDirectory();
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(FileManagerTest, MakesIntermediateDirectoriesAndGluesAPathWithoutSlashToTheContainer) {
    const std::tuple<std::string, const char*, std::string> table[] = {
        {"", "/a/b/c/", "/a/b/c/"},
        {"", "/a/b/c/", "/a/b/c/"}, // which are there already
        {"/group", "cache/", "/groupcache/"},
        {"/group/", "cache/", "/groupcache/"}};
    for (const auto& [group, path, directory] : table) {
        container = URL::fileURL(folder.path() + group);
        const auto one = FileManager::sharedGroupManager(path);
        EXPECT_EQ(one->documentsDirectory(), folder.path() + directory);
        EXPECT_TRUE(std::filesystem::is_directory(folder.path() + directory));
        one->kill();
    }
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(FileManagerTest, TellsWhatKeepsItFromMakingTheDirectoryAndGivesItAllTheSame) {
    folder.write("videos", "a file");
    EXPECT_EQ(manager->documentsDirectory(), folder.path() + "/videos/");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], HasSubstr(folder.path()));
}

TEST_F(FileManagerTest, HasNoDirectoryWithoutAContainerThatIsAFileAndThenForGood) {
    for (const auto& none : {std::optional<URL>(), URL::parse("https://service.example/a")}) {
        container = none;
        EXPECT_FALSE(manager->documentsDirectory());
        container = URL::fileURL(folder.path());
        EXPECT_FALSE(manager->documentsDirectory());
        EXPECT_EQ(asked.size(), 1U);
        manager->cleanDirectory(0);
        EXPECT_THAT(lines, IsEmpty());
        manager->kill();
        manager = FileManager::sharedGroupManager("/videos/");
        asked.clear();
    }
}

TEST_F(FileManagerTest, TakesTheGroupOfTheBundle) {
    const auto groupOf = [&](std::optional<std::string> bundle) {
        Application::setBundleIdentifier(std::move(bundle));
        const auto one = FileManager::sharedGroupManager("/group/");
        one->documentsDirectory();
        one->kill();
        return asked.back();
    };
    const std::string usual = groupOf(std::nullopt);
    const std::string enterprise = groupOf("org.enterprise.loops");
    EXPECT_NE(usual, enterprise);
    EXPECT_EQ(groupOf("org.example.loops"), usual);
    EXPECT_EQ(groupOf("org.Enterprise.loops"), usual);
    EXPECT_EQ(groupOf("enterprise"), enterprise);
    EXPECT_EQ(groupOf(""), usual);
}

TEST_F(FileManagerTest, TakesADirectoryOfTheHosts) {
    manager->setDocumentsDirectory("/nowhere/");
    EXPECT_EQ(manager->documentsDirectory(), "/nowhere/");
    manager->setDocumentsDirectory(std::nullopt);
    EXPECT_FALSE(manager->documentsDirectory());
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(FileManagerTest, KeepsTheNewestAndOneMore) {
    const struct {
        std::vector<std::string> names;
        std::int64_t kept;
        std::vector<std::string> left;
        std::vector<std::string> toldOf;
    } table[] = {
        {{"t4", "t3", "t2", "t1"}, 3, {"t4", "t3", "t2", "t1"}, {}},
        {{"t4", "t3", "t2", "t1"}, 2, {"t4", "t3", "t2"}, {}},
        {{"t4", "t3", "t2", "t1"}, 0, {"t4"}, {}},
        {{"t4", "t3"}, -1, {}, {}},
        {{"b", "a"}, std::numeric_limits<std::int64_t>::max(), {"b", "a"}, {}},
        {{"b", "a"}, std::numeric_limits<std::int64_t>::min(), {}, {}},
        // A file's name ends before a "?": these lead to another file, and to the directory itself.
        {{"new", "a", "a?b", "?b"}, 1, {"new", "a", "a?b", "?b"}, {"videos/a?b", "videos/?b"}},
        {{"c", "b?x", "a"}, -1, {"b?x"}, {"b?x"}},
        {{"a\nb?c"}, -1, {"a\nb?c"}, {"a\\x0Ab?c"}},
    };
    for (const auto& one : table) {
        SCOPED_TRACE(::testing::PrintToString(one.names) + std::to_string(one.kept));
        fill(one.names);
        manager->cleanDirectory(one.kept);
        EXPECT_THAT(left(), ::testing::UnorderedElementsAreArray(one.left));
        ASSERT_EQ(lines.size(), one.toldOf.size());
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_THAT(lines[i], HasSubstr(one.toldOf[i]));
        }
        lines.clear();
        std::filesystem::remove_all(folder.path("videos"));
        std::filesystem::create_directory(folder.path("videos"));
    }
}

TEST_F(FileManagerTest, DeletesHiddenFilesLinksAndDirectories) {
    fill({"new"});
    folder.write("kept", "");
    std::filesystem::create_symlink(folder.path("kept"), folder.path("videos/link"));
    folder.write("videos/.hidden", "");
    std::filesystem::create_symlink(folder.path("nothing"), folder.path("videos/nowhere"));
    std::filesystem::create_directory(folder.path("videos/sub"));
    folder.write("videos/sub/inner", "");
    manager->cleanDirectory(-1);
    EXPECT_THAT(left(), ElementsAre("nowhere")) << "no file is there to be deleted";
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(folder.names(), ElementsAre("kept", "videos")) << "a link is not followed";
}

TEST_F(FileManagerTest, DoesNotCountDownloadsUnderWay) {
    fill({"b", "a"});
    DownloadFile file(folder.path("videos/c"));
    manager->cleanDirectory(0);
    EXPECT_THAT(left(), UnorderedElementsAre("b", StartsWith(".download-")));
    EXPECT_TRUE(file.commit());
    EXPECT_THAT(left(), UnorderedElementsAre("b", "c"));
}

TEST_F(FileManagerTest, DeletesNothingBesideADirectoryWithoutASlash) {
    // Each name leads to a file beside the directory, but for those that lead nowhere: where one
    // entry cannot be examined, nothing is deleted.
    fill({"c", "b", "a"});
    manager->setDocumentsDirectory(folder.path("videos"));
    for (const char* name : {"videosa", "videosb", "videosc"}) {
        lines.clear();
        manager->cleanDirectory(-1);
        ASSERT_EQ(lines.size(), 1U) << name;
        EXPECT_THAT(lines[0], HasSubstr("No such file or directory"));
        folder.write(name, "");
    }
    lines.clear();
    manager->cleanDirectory(-1);
    EXPECT_EQ(lines.size(), 3U);
    EXPECT_EQ(left().size(), 3U);
    EXPECT_THAT(folder.names(), ElementsAre("videos", "videosa", "videosb", "videosc"));
}

TEST_F(FileManagerTest, TellsOfEachFileThatCannotBeDeletedAndGoesOn) {
    fill({"c", "b", "a"});
    // In a process of its own, because the administrator has to become somebody else for it.
    EXPECT_EXIT(
        {
            const bool bound = chmod(folder.path().c_str(), 0755) == 0 &&
                               chmod(folder.path("videos").c_str(), 0555) == 0 &&
                               (geteuid() != 0 || setuid(65534) == 0);
            manager->cleanDirectory(-1);
            exit(bound && lines.size() == 3 && left().size() == 3 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    chmod(folder.path("videos").c_str(), 0755);
}

TEST_F(FileManagerTest, TrimsARelativeDirectoryAndNoneThatItsTextMayBeTakenFor) {
    fill({"a"});
    // Seen from the root, the text without its first component is the path of the other directory.
    std::filesystem::create_directories(folder.path("top" + folder.path("videos")));
    folder.write("top" + folder.path("videos/a"), "in the directory that is meant");
    // In a process of its own, because all threads share the working directory.
    EXPECT_EXIT(
        {
            const bool moved = chdir(folder.path().c_str()) == 0;
            manager->setDocumentsDirectory("top" + folder.path("videos/"));
            manager->cleanDirectory(-1);
            exit(moved && lines.empty() ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("top" + folder.path("videos"))));
    EXPECT_THAT(left(), ElementsAre("a"));
}

TEST_F(FileManagerTest, TellsInOneLineWhereThereIsNothingToList) {
    for (const auto& [name, told] :
         {std::pair("gone/", "gone/"), std::pair("no\nsuch\r/", "no\\x0Asuch\\x0D/")}) {
        manager->setDocumentsDirectory(folder.path(name));
        manager->cleanDirectory(-1);
        EXPECT_THAT(lines, ElementsAre(HasSubstr(folder.path(told))));
        lines.clear();
    }
}

TEST_F(FileManagerTest, TakesAFileOfTheFarFutureForTheNewest) {
    fill({"new", "far"});
    // In the year 2300: nanoseconds since 1970 do not fit into 64 bits.
    const std::array<timespec, 2> times{{{10'413'792'000, 0}, {10'413'792'000, 0}}};
    ASSERT_EQ(utimensat(AT_FDCWD, folder.path("videos/far").c_str(), times.data(), 0), 0);
    struct stat kept {};
    ASSERT_EQ(stat(folder.path("videos/far").c_str(), &kept), 0);
    if (kept.st_mtim.tv_sec != times[1].tv_sec) {
        GTEST_SKIP() << "this file system has no such dates";
    }
    manager->cleanDirectory(0);
    EXPECT_THAT(left(), ElementsAre("far"));
}

TEST_F(FileManagerTest, ClearsWhatKilledDownloadsLeftAtFirstAndAtEachTrimming) {
    std::filesystem::create_directory(folder.path("videos"));
    folder.write("videos/.download-mine.part", "not of that kind");
    for (int round = 0; round < 3; ++round) {
        folder.write("videos/" + AbandonedDownloads::temporaryName(), "half a file");
        round == 0 ? static_cast<void>(manager->documentsDirectory()) : manager->cleanDirectory(5);
        EXPECT_THAT(left(), ElementsAre(".download-mine.part"));
    }
    EXPECT_THAT(lines, IsEmpty());
}

class ApplicationTest : public ::testing::Test {
protected:
    ApplicationTest() {
        setenv("HOME", "/home/mara", 1);
        unsetenv("XDG_DATA_HOME");
    }
    ~ApplicationTest() override {
        Application::setGroupContainers({});
        Application::setBundleIdentifier(std::nullopt);
    }

    static std::optional<std::string> container() {
        const auto url = Application::groupContainer("group.one");
        return url ? url->filePath() : std::nullopt;
    }
};

TEST_F(ApplicationTest, HasTheIdentifierThatTheHostSets) {
    EXPECT_FALSE(Application::bundleIdentifier());
    Application::setBundleIdentifier("org.example.loops");
    EXPECT_EQ(Application::bundleIdentifier(), "org.example.loops");
}

TEST_F(ApplicationTest, KeepsContainersInTheUsersDataDirectory) {
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
    setenv("XDG_DATA_HOME", "/data of mine", 1);
    EXPECT_EQ(container(), "/data of mine/group.one");
}

TEST_F(ApplicationTest, IgnoresVariablesThatNameNoAbsolutePath) {
    setenv("XDG_DATA_HOME", "data", 1);
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
    setenv("XDG_DATA_HOME", "", 1);
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
    setenv("HOME", "home", 1);
    EXPECT_FALSE(container());
    unsetenv("HOME");
    EXPECT_FALSE(container());
}

TEST_F(ApplicationTest, AsksTheHostForContainers) {
    Application::setGroupContainers([](const std::string& group) {
        return group == "group.one" ? URL::parse("file:///containers/1") : std::nullopt;
    });
    EXPECT_EQ(container(), "/containers/1");
    EXPECT_FALSE(Application::groupContainer("group.two"));
    Application::setGroupContainers({});
    EXPECT_EQ(container(), "/home/mara/.local/share/group.one");
}

} // namespace KeloAPI::testing
