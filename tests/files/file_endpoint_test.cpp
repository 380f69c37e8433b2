#include "support/Awaited.hpp"
#include "support/RegistrySession.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/files/FileEndpoint.hpp>

#include <future>
#include <thread>

namespace KeloAPI::testing {

class FileEndpointTest : public RegistrySessionTest {
protected:
    FileEndpointTest() { manager->setDocumentsDirectory(folder.path() + "/"); }
    ~FileEndpointTest() override { manager->kill(); }

    std::shared_ptr<FileEndpoint> endpointOf(const std::string& path) const {
        return FileEndpoint::create(path, manager);
    }
    URL place(const std::string& name) const { return URL::fileURL(folder.path(name)); }

    /// Downloads and waits for the answer.
    FileDownloadResult download(const std::shared_ptr<FileEndpoint>& endpoint, const URL& to) {
        return awaited<FileDownloadResult>(
            [&](auto completion) { endpoint->download(to, completion); });
    }

    TemporaryFolder folder;
    std::shared_ptr<FileManager> manager = FileManager::sharedGroupManager("/file-endpoint/");
};

TEST_F(FileEndpointTest, HasItsPathAndItsManager) {
    const auto endpoint = endpointOf("https://media.example/v/abc.mp4");
    EXPECT_EQ(endpoint->path(), "https://media.example/v/abc.mp4");
    EXPECT_EQ(endpoint->fileManager(), manager);
    EXPECT_TRUE(endpoint->subscribers.empty());
    EXPECT_EQ(*endpoint, *endpointOf("https://media.example/v/abc.mp4"));
}

TEST_F(FileEndpointTest, IsKeptUnderItsLastComponentWithoutQuery) {
    manager->setDocumentsDirectory("/c/files/");
    const auto fileOf = [&](const std::string& path) {
        return endpointOf(path)->documentsFile()->filePath();
    };
    EXPECT_EQ(fileOf("https://media.example/v/abc.mp4?sig=1"), "/c/files/abc.mp4");
    EXPECT_EQ(fileOf("abc.mp4"), "/c/files/abc.mp4");
    EXPECT_EQ(fileOf("/v/a?b?c"), "/c/files/a");
    EXPECT_EQ(fileOf("/v/a?b=c/d?e"), "/c/files/d") << "first at the slash, then at the mark";
    EXPECT_EQ(fileOf("/v/a%20b#c"), "/c/files/a%20b#c") << "escapes stay";
    EXPECT_EQ(fileOf("/v/?x"), "/c/files/");
    EXPECT_EQ(fileOf("/v/"), "/c/files/");
    EXPECT_EQ(fileOf(""), "/c/files/");
    manager->setDocumentsDirectory("/c/files");
    EXPECT_EQ(fileOf("/v/abc"), "/c/filesabc") << "behind the directory as it is";
}

TEST_F(FileEndpointTest, FindsARelativeDirectoryBelowTheWorkingDirectory) {
    manager->setDocumentsDirectory("relative/files/");
    const auto file = endpointOf("/v/abc")->documentsFile();
    EXPECT_EQ(file->filePath(), (std::filesystem::current_path() / "relative/files/abc").string());
    EXPECT_EQ(manager->documentsDirectory(), "relative/files/") << "it reads as it was set";
}

TEST_F(FileEndpointTest, HasNoPlaceWithoutDirectory) {
    manager->setDocumentsDirectory(std::nullopt);
    const auto endpoint = endpointOf("/v/abc");
    EXPECT_FALSE(endpoint->documentsFile());
    EXPECT_FALSE(endpoint->localUrl());
    EXPECT_NO_THROW(endpoint->deleteFile());
    transport->answer({.body = "video"});
    EXPECT_TRUE(download(endpoint, place("elsewhere")).success());
    EXPECT_EQ(endpoint->localUrl(), place("elsewhere"));
}

TEST_F(FileEndpointTest, FindsAFileInTheCacheByItsName) {
    const auto endpoint = endpointOf("/v/abc.mp4?sig=1");
    EXPECT_FALSE(endpoint->localUrl());
    folder.write("abc.mp4", "video");
    EXPECT_EQ(endpoint->localUrl(), place("abc.mp4"));
    EXPECT_EQ(endpointOf("https://other.example/abc.mp4")->localUrl(), place("abc.mp4"))
        << "the name alone is the key";
}

TEST_F(FileEndpointTest, DownloadsToTheDestinationThatIsGiven) {
    const auto endpoint = endpointOf("https://media.example/v/abc.mp4?sig=1");
    transport->answer({.body = "video"});
    const auto result = download(endpoint, place("other.mp4"));
    ASSERT_TRUE(result.success());
    EXPECT_EQ(result.success()->endpoint, endpoint);
    EXPECT_EQ(endpoint->localUrl(), place("other.mp4"));
    EXPECT_EQ(folder.read("other.mp4"), "video");
    EXPECT_EQ(lastRequest().url->absoluteString(), "https://media.example/v/abc.mp4?sig=1");
    EXPECT_EQ(lastRequest().method, Method::GET);
}

TEST_F(FileEndpointTest, AnswersOnTheMainQueueOrWhereThatIsAskedForOnTheThreadThatFinished) {
    std::promise<std::thread::id> atOnce;
    transport->answer({.body = "video"});
    endpointOf("/v/a")->download(
        place("a"),
        [&](const FileDownloadResult&) { atOnce.set_value(std::this_thread::get_id()); },
        DownloadDelivery::AtOnce);
    // The main queue does not run meanwhile.
    auto answeredOn = atOnce.get_future();
    ASSERT_EQ(answeredOn.wait_for(timeLimit), std::future_status::ready);
    EXPECT_NE(answeredOn.get(), std::this_thread::get_id());

    std::optional<std::thread::id> later;
    transport->answer({.body = "video"});
    endpointOf("/v/b")->download(
        place("b"), [&](const FileDownloadResult&) { later = std::this_thread::get_id(); });
    EXPECT_TRUE(eventually([&] { return folder.read("b") == "video"; }));
    EXPECT_TRUE(runUntil([&] { return later.has_value(); }));
    EXPECT_EQ(later, std::this_thread::get_id());
}

TEST_F(FileEndpointTest, LivesUntilItsCompletionHasRun) {
    std::weak_ptr<FileEndpoint> weak;
    bool done = false;
    {
        const auto endpoint = endpointOf("/v/abc.mp4");
        weak = endpoint;
        endpoint->download(place("abc.mp4"), [&](const FileDownloadResult&) { done = true; });
    }
    EXPECT_FALSE(weak.expired());
    transport->answer({.body = "video"});
    EXPECT_TRUE(runUntil([&] { return done; }));
    EXPECT_TRUE(runUntil([&] { return weak.expired(); }));
}

TEST_F(FileEndpointTest, DeletesTheFileAndStillReportsIt) {
    EXPECT_NO_THROW(endpointOf("/v/abc.mp4")->deleteFile()) << "nothing is there";
    folder.write("abc.mp4", "video");
    const auto endpoint = endpointOf("/v/abc.mp4");
    endpoint->deleteFile();
    EXPECT_TRUE(folder.names().empty());
    EXPECT_EQ(endpoint->localUrl(), place("abc.mp4"));
    EXPECT_FALSE(endpointOf("/v/abc.mp4")->localUrl());
    try {
        endpoint->deleteFile();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_EQ(error.path1(), folder.path("abc.mp4"));
    }
}

TEST_F(FileEndpointTest, DeletesTheWholeDirectoryForAPathThatEndsInASlash) {
    std::filesystem::create_directory(folder.path("cache"));
    folder.write("cache/a", "video");
    manager->setDocumentsDirectory(folder.path("cache/"));
    const auto endpoint = endpointOf("/v/");
    EXPECT_EQ(endpoint->localUrl(), place("cache/"));
    endpoint->deleteFile();
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(FileEndpointTest, KeepsNothingUnderANameThatMeansADirectory) {
    std::filesystem::create_directory(folder.path("cache"));
    folder.write("cache/a", "video");
    folder.write("neighbour", "kept");
    manager->setDocumentsDirectory(folder.path("cache/"));
    for (const char* path : {"..", ".", "https://media.example/v/..", "https://media.example/v/.",
                             "/v/..?sig=1", "/v/.?sig=/."}) {
        const auto endpoint = endpointOf(path);
        EXPECT_FALSE(endpoint->documentsFile()) << path;
        EXPECT_FALSE(endpoint->localUrl()) << path;
        EXPECT_NO_THROW(endpoint->deleteFile());
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"cache", "neighbour"}));
    EXPECT_EQ(folder.read("cache/a"), "video");
    EXPECT_EQ(endpointOf("/v/...")->documentsFile(), place("cache/...")) << "that is a name";
}

TEST_F(FileEndpointTest, DownloadsWhatHasNoNameToADestination) {
    const auto endpoint = endpointOf("https://media.example/v/..");
    transport->answer({.body = "video"});
    ASSERT_TRUE(download(endpoint, place("given")).success());
    EXPECT_EQ(transport->requests().size(), 1U);
    EXPECT_EQ(folder.read("given"), "video");
    EXPECT_EQ(endpoint->localUrl(), place("given"));
    endpoint->deleteFile();
    EXPECT_TRUE(folder.names().empty());
}

using FileEndpointDeathTest = FileEndpointTest;

TEST_F(FileEndpointDeathTest, NeedsAManagerAndACompletion) {
    EXPECT_DEATH(FileEndpoint::create("/v/a", nullptr), "a file endpoint needs a file manager");
    EXPECT_DEATH(endpointOf("/v/a")->download(place("a"), FileEndpoint::Completion()),
                 "a download needs a completion");
}

} // namespace KeloAPI::testing
