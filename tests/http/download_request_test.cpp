#include "support/MainLoop.hpp"
#include "support/ManualTransport.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <semaphore>

namespace KeloAPI::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DownloadRequestTest : public ::testing::Test {
protected:
    /// How the destination is told: when the head is there, or beforehand.
    enum class Way { Chosen, Known };

    void start(const URL& destination, Way way = Way::Chosen) {
        const auto choose = [=, this](const HTTPResponse& response) {
            statusSeen = response.statusCode;
            return destination;
        };
        listenTo(way == Way::Chosen ? manager.download(FixedRequest(), choose)
                                    : manager.download(FixedRequest(), destination));
    }
    void listenTo(std::shared_ptr<Request> started) {
        request = std::move(started);
        request->progress([this](std::int64_t bytes, std::int64_t total, std::int64_t expected) {
            progress.push_back({bytes, total, expected});
        });
        request->response([this](const ResponseContent& content, Timeline) {
            // What a download is worth is settled before its handlers hear of it.
            return [this, names = folder.names(), error = content.error, body = content.body] {
                namesThen = names;
                outcome = error;
                EXPECT_EQ(body, "");
                ended = true;
            };
        });
    }
    struct Ending {
        URL destination;
        /// Absent where no head comes.
        std::optional<int> status;
        std::string body;
        /// The exchange's, and the download's.
        std::optional<HTTPErrorCode> error;
        std::optional<HTTPErrorCode> expected;
    };

    /// Beside the old file "video" and a folder "taken".
    void expectEnding(const Ending& ending, Way way) {
        SCOPED_TRACE(ending.destination.absoluteString() + " " +
                     std::to_string(ending.status.value_or(0)) + ending.body.substr(0, 9));
        folder.write("video", "old");
        ended = false;
        statusSeen.reset();
        progress.clear();
        start(ending.destination, way);
        const bool hasBadStatus = ending.expected == HTTPErrorCode::HTTPStatus;
        bool wanted = true;
        if (ending.status) {
            transport->head(*ending.status);
            if (hasBadStatus) {
                EXPECT_THAT(folder.names(), ElementsAre("taken", "video")) << "nothing is kept";
            }
            wanted = ending.body.empty() || transport->data(ending.body);
            const bool isRefused = ending.expected && ending.expected != ending.error &&
                                   ending.destination.path() != folder.path("taken");
            EXPECT_EQ(wanted, ending.body.empty() || !isRefused);
        }
        const auto code = wanted ? ending.error : HTTPErrorCode::Unknown;
        transport->complete(code ? std::optional(httpError(*code, "ended")) : std::nullopt);
        const auto error = end();
        ASSERT_EQ(error.has_value(), ending.expected.has_value());
        if (error) {
            EXPECT_TRUE(isHTTPError(*error, *ending.expected)) << error->description();
            EXPECT_TRUE(!hasBadStatus || error->integer(HTTPStatusCodeKey) == ending.status);
        }
        for (const auto& report : progress) {
            EXPECT_THAT(report, ElementsAre(ending.body.size(), ending.body.size(), -1));
        }
        EXPECT_TRUE(progress.empty() || !ending.body.empty());
        EXPECT_EQ(folder.read("video"), ending.expected ? "old" : ending.body);
        EXPECT_THAT(namesThen, ElementsAre("taken", "video"));
        const bool isAsked = way == Way::Chosen && ending.status == 200;
        EXPECT_EQ(statusSeen, isAsked ? ending.status : std::nullopt);
    }

    std::optional<Error> end() {
        EXPECT_TRUE(runUntil([this] { return ended; }));
        return outcome;
    }

    TemporaryFolder folder;
    const URL video = URL::fileURL(folder.path("video"));
    std::shared_ptr<ManualTransport> transport = std::make_shared<ManualTransport>();
    Manager manager{transport};
    std::shared_ptr<Request> request;
    std::vector<std::vector<std::int64_t>> progress;
    std::vector<std::string> namesThen;
    std::optional<Error> outcome;
    std::optional<int> statusSeen;
    bool ended = false;
};

TEST_F(DownloadRequestTest, BecomesAFileWhereItIsChosenWithTheAnswer) {
    start(video);
    transport->sent(10, 10); // which is not reported
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_FALSE(statusSeen);
    transport->head(200, 6);
    EXPECT_TRUE(transport->data("abc"));
    EXPECT_EQ(folder.read("video"), "");
    EXPECT_TRUE(transport->data("def"));
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_THAT(namesThen, ElementsAre("video"));
    EXPECT_EQ(folder.read("video"), "abcdef");
    EXPECT_EQ(statusSeen, 200);
    EXPECT_THAT(progress, ElementsAre(ElementsAre(6, 6, 6)));
}

TEST_F(DownloadRequestTest, EndsAsItsAnswerAndItsDestinationSay) {
    using enum HTTPErrorCode;
    std::filesystem::create_directory(folder.path("taken"));
    const URL folderItself = URL::fileURL(folder.path("taken"));
    std::vector<Ending> table = {
        {video, 200, "abcdef", {}, {}},
        {video, 200, "", {}, {}},
        {video, 404, "", {}, HTTPStatus},
        {video, 200, "half", ConnectionLost, ConnectionLost},
        {video, 200, std::string(2'000'000, 'x'), Cancelled, Cancelled},
        {video, {}, "", CannotConnect, CannotConnect},
        {video, {}, "", {}, BadServerResponse},
        {folderItself, 200, "data", {}, CannotWriteFile},
    };
    for (const int status :
         {101, 204, 205, 206, 300, 302, 304, 307, 399, 400, 403, 404, 500, 503, 599}) {
        table.push_back({video, status, "no file", {}, HTTPStatus});
    }
    // Where no file can be made: in no folder, in a file, and at no file URL.
    for (const URL& nowhere :
         {URL::fileURL(folder.path("missing/video")), URL::fileURL(folder.path("video/inside")),
          *URL::parse("https://h/video")}) {
        table.push_back({nowhere, 200, "data", {}, CannotWriteFile});
        table.push_back({nowhere, 404, "", {}, HTTPStatus});
        table.push_back({nowhere, {}, "", Cancelled, Cancelled});
        table.push_back({nowhere, {}, "", TimedOut, TimedOut});
    }
    for (const Ending& ending : table) {
        for (const Way way : {Way::Chosen, Way::Known}) {
            expectEnding(ending, way);
        }
    }
}

TEST_F(DownloadRequestTest, APartThatWasAskedForBecomesTheFile) {
    FixedRequest part;
    part.request.headerFields["range"] = "bytes=2-4";
    listenTo(manager.download(part, video));
    transport->answer("cde", 206);
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_EQ(folder.read("video"), "cde");
}

TEST_F(DownloadRequestTest, IsSettledWhileTheResponseQueueIsBusy) {
    std::binary_semaphore parsed{0};
    bool heard = false;
    manager.request(FixedRequest())->response([&](const ResponseContent&, Timeline) {
        EXPECT_TRUE(parsed.try_acquire_for(timeLimit));
        return [&heard] { heard = true; };
    });
    transport->complete();

    request = manager.download(FixedRequest(), video);
    std::vector<int> order;
    const auto note = [&order](int number) {
        return [&order, number](const ResponseContent&, Timeline) -> Request::Completion {
            order.push_back(number);
            return nullptr;
        };
    };
    request->response([&](const ResponseContent& content, Timeline timeline) {
        EXPECT_EQ(folder.read("video"), "abc");
        request->response(note(3)); // behind those that were there before it
        return note(1)(content, timeline);
    });
    request->response(note(2));
    transport->answer("abc");
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    EXPECT_EQ(MainQueue::main().drain(), 0U) << "there is nothing to hear";
    parsed.release();
    EXPECT_TRUE(runUntil([&] { return heard; }));
}

TEST_F(DownloadRequestTest, LetsTheDestinationsChooserGo) {
    auto token = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = token;
    const auto download = manager.download(
        FixedRequest(), [token = std::move(token), this](const HTTPResponse&) { return video; });
    transport->head(200);
    transport->complete();
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

} // namespace KeloAPI::testing
