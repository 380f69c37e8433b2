#include "support/TemporaryFolder.hpp"

#include <KeloAPI/base/internal/Directory.hpp>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <utility>

namespace KeloAPI {

using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

TEST(DirectoryTest, NamesAllThatIsInItAndNotItself) {
    const testing::TemporaryFolder folder;
    EXPECT_THAT(namesIn(folder.path()), IsEmpty());
    folder.write("a", "");
    folder.write(".hidden", "");
    folder.write("...", "");
    std::filesystem::create_directory(folder.path("folder"));
    ASSERT_EQ(symlink("nowhere", folder.path("link").c_str()), 0);
    EXPECT_THAT(namesIn(folder.path()),
                UnorderedElementsAre("a", ".hidden", "...", "folder", "link"));
}

TEST(DirectoryTest, TellsWhenWhatIsWantedWasModifiedWithoutFollowingALink) {
    const testing::TemporaryFolder folder;
    folder.write("a", "");
    folder.write("b", "");
    ASSERT_EQ(symlink("a", folder.path("link").c_str()), 0);
    const std::pair<const char*, timespec> times[] = {{"a", {1000, 5}}, {"link", {-7, 999999999}}};
    for (const auto& [name, time] : times) {
        const timespec both[] = {time, time};
        ASSERT_EQ(utimensat(AT_FDCWD, folder.path(name).c_str(), both, AT_SYMLINK_NOFOLLOW), 0);
    }
    const auto entries =
        entriesOf(folder.path() + "/", [](std::string_view name) { return name != "b"; });
    std::map<std::string, std::pair<std::int64_t, std::int64_t>> modified;
    for (const DirectoryEntry& entry : entries) {
        modified.emplace(entry.name, entry.modified);
    }
    EXPECT_THAT(modified,
                UnorderedElementsAre(Pair("a", Pair(1000, 5)), Pair("link", Pair(-7, 999999999))));
}

TEST(DirectoryTest, ThatIsNoneThrowsWithItsPath) {
    const testing::TemporaryFolder folder;
    for (const std::string& none : {folder.path("missing"), folder.write("file", "")}) {
        try {
            namesIn(none);
            ADD_FAILURE() << none;
        } catch (const std::filesystem::filesystem_error& failure) {
            EXPECT_EQ(failure.path1(), none);
            EXPECT_TRUE(failure.code() == std::errc::no_such_file_or_directory ||
                        failure.code() == std::errc::not_a_directory);
        }
    }
    // The folder goes on, one of its entries does not.
    const auto remove = [&](std::string_view name) {
        return unlink(folder.path(std::string(name)).c_str()) == 0;
    };
    EXPECT_THROW(entriesOf(folder.path() + "/", remove), std::filesystem::filesystem_error);
}

} // namespace KeloAPI
