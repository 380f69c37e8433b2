#include "support/Awaited.hpp"
#include "support/ServiceTest.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/files/FileQueue.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <set>
#include <thread>

namespace KeloAPI::testing {

/// Real videos, fetched into a cache of the test's own.
class FilesAtService : public ServiceTest {
protected:
    using Strings = std::vector<std::string>;

    FilesAtService() { manager->setDocumentsDirectory(folder.path() + "/"); }
    ~FilesAtService() override {
        queue->kill();
        manager->kill();
    }

    std::shared_ptr<FileEndpoint> file(const std::string& url) const {
        return FileEndpoint::create(url, manager);
    }
    /// The URLs of a page's videos. The request log starts here.
    Strings videos(int count) {
        Strings urls;
        const auto page =
            service.call("GET", "/timelines/latest?size=" + std::to_string(count)).at("data");
        for (const auto& record : page.at("records")) {
            for (const auto& offer : record.at("videoUrls")) {
                if (offer.at("format") == "h264" && offer.at("rate") == 0) {
                    urls.push_back(offer.at("videoUrl"));
                }
            }
        }
        EXPECT_EQ(urls.size(), static_cast<std::size_t>(count));
        service.requests();
        return urls;
    }
    static std::string pathOf(const std::string& url) { return URL::parse(url)->path(); }
    static std::string nameOf(const std::string& url) { return url.substr(url.rfind('/') + 1); }

    /// What was asked of the service since the last call.
    Strings asked() {
        Strings paths;
        for (const auto& request : service.requests()) {
            paths.push_back(request.path);
        }
        return paths;
    }

    static std::optional<Error> download(const std::shared_ptr<FileEndpoint>& endpoint,
                                         const URL& to) {
        const auto result = awaited<FileDownloadResult>(
            [&](auto completion) { endpoint->download(to, completion); });
        return result.error() != nullptr ? std::optional(*result.error()) : std::nullopt;
    }
    void addFault(const std::string& url, const nlohmann::json& action) {
        service.addFault({{"match", {{"path", pathOf(url)}}}, {"action", action}});
    }

    TemporaryFolder folder;
    std::shared_ptr<FileManager> manager = FileManager::sharedGroupManager("/e2e-files/");
    std::shared_ptr<FileQueue> queue = FileQueue::withKey("e2e");
};

TEST_F(FilesAtService, EveryRenditionIsWhatAPlainRequestBrings) {
    const auto post =
        service.call("GET", "/timelines/latest?size=1").at("data").at("records").at(0);
    std::set<std::string> contents;
    for (const auto& offer : post.at("videoUrls")) {
        const std::string url = offer.at("videoUrl");
        const auto endpoint = file(url);
        ASSERT_EQ(download(endpoint, endpoint->documentsFile().value()), std::nullopt) << url;
        EXPECT_EQ(endpoint->localUrl(), URL::fileURL(folder.path(nameOf(url))));
        EXPECT_EQ(folder.read(nameOf(url)), service.get(pathOf(url))) << url;
        contents.insert(folder.read(nameOf(url)));
    }
    EXPECT_EQ(contents.size(), post.at("videoUrls").size());
    EXPECT_EQ(folder.names().size(), contents.size());
}

TEST_F(FilesAtService, ACachedFileCausesNoTraffic) {
    const std::string url = videos(1).front();
    const auto endpoint = file(url);
    ASSERT_EQ(download(endpoint, *endpoint->documentsFile()), std::nullopt);
    ASSERT_EQ(asked(), Strings{pathOf(url)});
    renewManager(*session);
    const auto before = service.connections().at("accepted").get<int>();

    for (const auto& known : {endpoint, file(url), file(url + "?sig=1")}) {
        std::optional<FileDownloadResult> result;
        known->download(URL::fileURL(folder.path("elsewhere")),
                        [&](const FileDownloadResult& sent) { result = sent; });
        ASSERT_TRUE(result && result->success()) << "not answered at once";
        EXPECT_EQ(result->success()->endpoint, known);
        EXPECT_EQ(known->localUrl(), URL::fileURL(folder.path(nameOf(url))));
    }
    bool answered = false;
    queue->download(file(url), *endpoint->documentsFile(),
                    [&](const FileDownloadResult& result) { answered = result.success(); });
    EXPECT_TRUE(answered);
    EXPECT_EQ(asked(), Strings());
    // Two more are the questions for requests and connections.
    EXPECT_EQ(service.connections().at("accepted").get<int>(), before + 2);
    EXPECT_EQ(folder.names(), Strings{nameOf(url)});
}

TEST_F(FilesAtService, AQueueFetchesAPageByPriority) {
    using enum QueuePriority;
    const Strings urls = videos(6);
    const QueuePriority priorities[] = {Low, Low, Normal, High, Normal, High};
    addFault(urls[0], {{"type", "delay"}, {"milliseconds", 300}});
    Strings finished;
    for (std::size_t i = 0; i < urls.size(); ++i) {
        const auto endpoint = file(urls[i]);
        queue->download(endpoint, *endpoint->documentsFile(), priorities[i],
                        [&finished, endpoint](const FileDownloadResult& result) {
                            EXPECT_NE(result.success(), nullptr);
                            finished.push_back(pathOf(endpoint->path()));
                        });
    }
    ASSERT_TRUE(runUntil([&] { return finished.size() == urls.size(); }));
    Strings expected;
    for (const std::size_t i : {0, 3, 5, 2, 4, 1}) {
        expected.push_back(pathOf(urls[i]));
        EXPECT_EQ(folder.read(nameOf(urls[i])), service.get(pathOf(urls[i])));
    }
    EXPECT_EQ(finished, expected);
    Strings order = asked();
    order.resize(urls.size()); // behind them are this test's own
    EXPECT_EQ(order, expected);
    EXPECT_TRUE(queue->queuedFiles().empty());
}

TEST_F(FilesAtService, AQueueGoesOnWhileTheMainThreadIsBusy) {
    const Strings urls = videos(4);
    std::vector<std::thread::id> heardOn;
    for (const auto& url : urls) {
        const auto endpoint = file(url);
        queue->download(endpoint, *endpoint->documentsFile(),
                        [&](const auto&) { heardOn.push_back(std::this_thread::get_id()); });
    }
    EXPECT_TRUE(eventually([&] { return folder.names().size() >= urls.size(); }));
    EXPECT_TRUE(heardOn.empty());
    ASSERT_TRUE(runUntil([&] { return heardOn.size() == urls.size(); }));
    EXPECT_EQ(heardOn, std::vector(urls.size(), std::this_thread::get_id()));
    for (const auto& url : urls) {
        EXPECT_EQ(folder.read(nameOf(url)), service.get(pathOf(url)));
    }
}

TEST_F(FilesAtService, AFailedOrCancelledTransferLeavesTheDestinationAsItWas) {
    const std::string url = videos(1).front();
    const auto unknown = file("https://" + service.host() + "/media/videos/nothing.mp4");
    const auto endpoint = file(url);
    folder.write("older", "old");
    const auto failure = [&](const std::shared_ptr<FileEndpoint>& failing) {
        const auto error = download(failing, URL::fileURL(folder.path("older")));
        EXPECT_EQ(folder.names(), Strings{"older"});
        EXPECT_EQ(folder.read("older"), "old");
        EXPECT_EQ(failing->localUrl(), std::nullopt);
        return error.value_or(Error("none", 0));
    };
    for (const char* type : {"reset", "close"}) {
        addFault(url, {{"type", type}, {"afterBytes", 8000}});
        const Error error = failure(endpoint);
        EXPECT_TRUE(isHTTPError(error, HTTPErrorCode::ConnectionLost)) << error.description();
    }
    addFault(url, {{"type", "status"}, {"status", 503}});
    EXPECT_EQ(failure(endpoint).integer(HTTPStatusCodeKey), 503);
    EXPECT_EQ(failure(unknown).integer(HTTPStatusCodeKey), 404);
    addFault(url, {{"type", "stall"}, {"afterBytes", 8000}});
    endpoint->setDownloadProgressHandler([&](std::int64_t, std::int64_t total, std::int64_t) {
        if (total > 4000) {
            renewManager(*session); // ends what is under way
        }
    });
    EXPECT_TRUE(isHTTPError(failure(endpoint), HTTPErrorCode::Cancelled));
    endpoint->setDownloadProgressHandler({});
    EXPECT_EQ(download(endpoint, *endpoint->documentsFile()), std::nullopt);
    EXPECT_EQ(folder.read(nameOf(url)), service.get(pathOf(url)));
}

TEST_F(FilesAtService, ADownloadOfAnyAnswerReplacesAnOlderFile) {
    folder.write("a file", "old");
    const auto plain = Endpoint::create(session);
    plain->setPath("timelines/all");
    const URL destination = URL::fileURL(folder.path("a file"));
    const auto [url, error] = awaited<URL, std::optional<Error>>(
        [&](auto completion) { plain->download(destination, completion); });
    EXPECT_EQ(url, destination);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_TRUE(nlohmann::json::parse(folder.read("a file")).contains("data"));
    EXPECT_EQ(folder.names(), Strings{"a file"});
}

TEST_F(FilesAtService, ProgressReportsBytes) {
    const std::string url = videos(1).front();
    const auto size = static_cast<std::int64_t>(service.get(pathOf(url)).size());
    service.call("POST", "/_service/media-rate",
                 nlohmann::json{{"bytesPerSecond", 2 * size}}.dump());
    const auto endpoint = file(url);
    std::int64_t sum = 0;
    int reports = 0;
    endpoint->setDownloadProgressHandler(
        [&](std::int64_t bytes, std::int64_t total, std::int64_t expected) {
            ++reports;
            sum += bytes;
            EXPECT_GT(bytes, 0);
            EXPECT_EQ(total, sum);
            EXPECT_EQ(expected, size);
        });
    ASSERT_EQ(download(endpoint, *endpoint->documentsFile()), std::nullopt);
    EXPECT_EQ(sum, size);
    EXPECT_GE(reports, 4);
}

} // namespace KeloAPI::testing
