#include "support/MainLoop.hpp"
#include "support/ManualTransport.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <semaphore>

namespace KeloAPI {

using ::testing::ElementsAre;
using testing::FixedRequest;
using ::testing::IsEmpty;
using testing::runUntil;

class DownloadRequestTest : public ::testing::Test {
protected:
    void start() { start(URL::fileURL(folder.path("video"))); }
    void start(const URL& destination) {
        listenTo(manager.download(FixedRequest(), [=, this](const HTTPResponse& response) {
            statusSeen = response.statusCode;
            return destination;
        }));
    }
    /// To a destination that is known beforehand.
    void startTo(const URL& destination) {
        listenTo(manager.download(FixedRequest(), destination));
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
    /// Where no file can be made: in no folder, and at no file URL.
    std::vector<URL> impossible() const {
        return {URL::fileURL(folder.path("missing/video")), *URL::parse("https://h/video")};
    }
    std::optional<Error> end() {
        EXPECT_TRUE(runUntil([this] { return ended; }));
        return outcome;
    }

    testing::TemporaryFolder folder;
    std::shared_ptr<testing::ManualTransport> transport =
        std::make_shared<testing::ManualTransport>();
    Manager manager{transport};
    std::shared_ptr<Request> request;
    std::vector<std::vector<std::int64_t>> progress;
    std::vector<std::string> namesThen;
    std::optional<Error> outcome;
    std::optional<int> statusSeen;
    bool ended = false;
};

TEST_F(DownloadRequestTest, BecomesAFile) {
    start();
    transport->head(200, 6);
    EXPECT_TRUE(transport->data("abc"));
    EXPECT_EQ(folder.read("video"), "");
    EXPECT_TRUE(transport->data("def"));
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_THAT(namesThen, ElementsAre("video"));
    EXPECT_EQ(folder.read("video"), "abcdef");
    EXPECT_EQ(statusSeen, 200);
    ASSERT_FALSE(progress.empty());
    EXPECT_THAT(progress.back(), ElementsAre(6, 6, 6));
}

TEST_F(DownloadRequestTest, AnEmptyAnswerBecomesAnEmptyFile) {
    folder.write("video", "old");
    start();
    transport->head(200, 0);
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_EQ(folder.read("video"), "");
    EXPECT_TRUE(progress.empty());
}

TEST_F(DownloadRequestTest, AnErrorPageNeverBecomesTheFile) {
    for (const int status : {400, 403, 404, 500, 503, 599}) {
        SCOPED_TRACE(status);
        folder.write("video", "old");
        ended = false;
        statusSeen.reset();
        start();
        transport->head(status, 9);
        EXPECT_FALSE(transport->data("not found"));
        transport->complete(httpError(HTTPErrorCode::Unknown, "the receiver gave up"));
        const auto error = end();
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::HTTPStatus));
        EXPECT_EQ(error->integer(HTTPStatusCodeKey), status);
        EXPECT_EQ(folder.read("video"), "old");
        EXPECT_THAT(namesThen, ElementsAre("video"));
        EXPECT_FALSE(statusSeen) << "no destination is asked for";
    }
}

TEST_F(DownloadRequestTest, AnAnswerWithoutTheWholeFileNeverBecomesIt) {
    for (const int status : {101, 204, 205, 206, 300, 302, 304, 307, 399}) {
        SCOPED_TRACE(status);
        folder.write("video", "old");
        ended = false;
        startTo(URL::fileURL(folder.path("video")));
        transport->sent();
        transport->head(status, -1);
        EXPECT_FALSE(transport->data("part"));
        transport->complete();
        const auto error = end();
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::HTTPStatus));
        EXPECT_EQ(error->integer(HTTPStatusCodeKey), status);
        EXPECT_EQ(folder.read("video"), "old");
        EXPECT_THAT(namesThen, ElementsAre("video"));
    }
}

TEST_F(DownloadRequestTest, APartThatWasAskedForBecomesTheFile) {
    FixedRequest part;
    part.request.headerFields["range"] = "bytes=2-4";
    listenTo(manager.download(part, URL::fileURL(folder.path("video"))));
    transport->head(206, 3);
    EXPECT_TRUE(transport->data("cde"));
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_EQ(folder.read("video"), "cde");
}

TEST_F(DownloadRequestTest, AnErrorWithoutAPageIsOneToo) {
    start();
    transport->head(404, 0);
    transport->complete();
    EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::HTTPStatus));
    EXPECT_THAT(namesThen, IsEmpty());
}

TEST_F(DownloadRequestTest, ABrokenTransferLeavesTheDestinationAndNoLitter) {
    for (const HTTPErrorCode code : {HTTPErrorCode::ConnectionLost, HTTPErrorCode::Cancelled}) {
        folder.write("video", "old");
        ended = false;
        start();
        transport->head(200, 100);
        EXPECT_TRUE(transport->data("half"));
        transport->complete(httpError(code, "ended"));
        EXPECT_TRUE(isHTTPError(end().value(), code));
        EXPECT_THAT(namesThen, ElementsAre("video"));
        EXPECT_EQ(folder.read("video"), "old");
    }
}

TEST_F(DownloadRequestTest, AFailureBeforeTheHeadTouchesNothing) {
    start();
    transport->complete(httpError(HTTPErrorCode::CannotConnect, "refused"));
    EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::CannotConnect));
    EXPECT_THAT(namesThen, IsEmpty());
}

TEST_F(DownloadRequestTest, ADestinationThatCannotBeWrittenIsItsError) {
    start(URL::fileURL(folder.path("missing/video")));
    transport->head(200, 4);
    EXPECT_FALSE(transport->data("data"));
    transport->complete(httpError(HTTPErrorCode::Unknown, "the receiver gave up"));
    EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::CannotWriteFile));
    EXPECT_THAT(namesThen, IsEmpty());
}

TEST_F(DownloadRequestTest, ADestinationThatIsAFolderIsItsErrorInTheEnd) {
    ASSERT_EQ(mkdir(folder.path("video").c_str(), 0700), 0);
    start();
    transport->head(200, 4);
    EXPECT_TRUE(transport->data("data"));
    transport->complete();
    EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::CannotWriteFile));
    EXPECT_THAT(namesThen, ElementsAre("video"));
}

TEST_F(DownloadRequestTest, ADestinationThatIsNoFileURLIsItsError) {
    start(*URL::parse("https://h/video"));
    transport->head(200, 4);
    EXPECT_FALSE(transport->data("data"));
    transport->complete();
    EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::CannotWriteFile));
}

TEST_F(DownloadRequestTest, AKnownDestinationsFileIsMadeWhileTheAnswerIsAwaited) {
    folder.write("video", "old");
    startTo(URL::fileURL(folder.path("video")));
    EXPECT_THAT(folder.names(), ElementsAre("video"));
    transport->sent();
    EXPECT_EQ(folder.names().size(), 2U);
    transport->sent(); // a redirect's
    EXPECT_EQ(folder.names().size(), 2U) << "one file is enough";
    EXPECT_EQ(folder.read("video"), "old");
    transport->head(200, 3);
    EXPECT_TRUE(transport->data("new"));
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_EQ(folder.read("video"), "new");
    EXPECT_THAT(namesThen, ElementsAre("video"));
}

TEST_F(DownloadRequestTest, AKnownDestinationDoesWithoutBeingToldOfTheSending) {
    startTo(URL::fileURL(folder.path("video")));
    transport->head(200, 3);
    EXPECT_TRUE(transport->data("new"));
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_EQ(folder.read("video"), "new");
}

TEST_F(DownloadRequestTest, AFileMadeBeforehandGoesWithTheFailure) {
    const auto expect = [this](HTTPErrorCode code) {
        const auto error = end();
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, code)) << error->description();
        EXPECT_THAT(namesThen, ElementsAre("video"));
        EXPECT_EQ(folder.read("video"), "old");
        ended = false;
    };
    folder.write("video", "old");
    startTo(URL::fileURL(folder.path("video")));
    transport->sent();
    transport->head(404, 0);
    EXPECT_THAT(folder.names(), ElementsAre("video")) << "nothing is kept for an error page";
    transport->complete();
    expect(HTTPErrorCode::HTTPStatus);

    startTo(URL::fileURL(folder.path("video")));
    transport->sent();
    transport->complete(httpError(HTTPErrorCode::ConnectionLost, "lost"));
    expect(HTTPErrorCode::ConnectionLost);
}

TEST_F(DownloadRequestTest, WhatTheServerSaysOutranksAFileThatCannotBeMade) {
    for (const URL& destination : impossible()) {
        SCOPED_TRACE(destination.absoluteString());
        startTo(destination);
        transport->sent();
        transport->head(404, 0);
        transport->complete();
        EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::HTTPStatus));
        ended = false;

        startTo(destination);
        transport->sent();
        transport->head(200, 1);
        EXPECT_FALSE(transport->data("x"));
        transport->complete(httpError(HTTPErrorCode::Unknown, "the receiver gave up"));
        EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::CannotWriteFile));
        ended = false;
    }
}

TEST_F(DownloadRequestTest, AFileThatCouldNotBeMadeBeforehandIsTriedAgainWithTheAnswer) {
    startTo(URL::fileURL(folder.path("later/video")));
    transport->sent();
    ASSERT_EQ(mkdir(folder.path("later").c_str(), 0700), 0);
    transport->head(200, 3);
    EXPECT_TRUE(transport->data("new"));
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_EQ(folder.read("later/video"), "new");
}

TEST_F(DownloadRequestTest, WithoutAnAnswerItsErrorIsTheTransports) {
    for (const URL& destination : impossible()) {
        for (const HTTPErrorCode code : {HTTPErrorCode::Cancelled, HTTPErrorCode::TimedOut}) {
            SCOPED_TRACE(destination.absoluteString());
            startTo(destination);
            transport->sent();
            transport->complete(httpError(code, "ended"));
            EXPECT_TRUE(isHTTPError(end().value(), code));
            ended = false;
        }
    }
}

TEST_F(DownloadRequestTest, AnEndWithoutAnAnswerTouchesNothing) {
    folder.write("video", "old");
    startTo(URL::fileURL(folder.path("video")));
    transport->sent();
    transport->complete();
    EXPECT_TRUE(isHTTPError(end().value(), HTTPErrorCode::BadServerResponse));
    EXPECT_EQ(folder.read("video"), "old");
    EXPECT_THAT(namesThen, ElementsAre("video"));
}

TEST_F(DownloadRequestTest, AChosenDestinationWaitsForTheAnswer) {
    start();
    transport->sent();
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_FALSE(statusSeen);
    transport->head(200, 0);
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
}

TEST_F(DownloadRequestTest, IsSettledWhileTheResponseQueueIsBusy) {
    std::binary_semaphore parsed{0};
    bool heard = false;
    manager.request(FixedRequest())->response([&](const ResponseContent&, Timeline) {
        EXPECT_TRUE(parsed.try_acquire_for(std::chrono::seconds(20)));
        return [&heard] { heard = true; };
    });
    transport->complete();

    request = manager.download(
        FixedRequest(), [this](const HTTPResponse&) { return URL::fileURL(folder.path("video")); });
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
    transport->head(200, 3);
    EXPECT_TRUE(transport->data("abc"));
    transport->complete();
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    EXPECT_EQ(MainQueue::main().drain(), 0U) << "there is nothing to hear";
    parsed.release();
    EXPECT_TRUE(runUntil([&] { return heard; }));
}

TEST_F(DownloadRequestTest, SentBytesAreNotReported) {
    start();
    transport->sent(10, 10);
    transport->head(200, -1);
    transport->data("ab");
    transport->complete();
    EXPECT_EQ(end(), std::nullopt);
    EXPECT_THAT(progress, ElementsAre(ElementsAre(2, 2, -1)));
}

TEST_F(DownloadRequestTest, LetsTheDestinationsChooserGo) {
    auto token = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = token;
    const auto download =
        manager.download(FixedRequest(), [token = std::move(token), this](const HTTPResponse&) {
            return URL::fileURL(folder.path("video"));
        });
    transport->head(200);
    transport->complete();
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

} // namespace KeloAPI
