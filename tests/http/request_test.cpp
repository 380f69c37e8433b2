#include "support/MainLoop.hpp"
#include "support/ManualTransport.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace KeloAPI {

using ::testing::ElementsAre;
using testing::FixedRequest;
using testing::runFor;
using testing::runUntil;
using namespace std::chrono_literals;

class RequestTest : public ::testing::Test {
protected:
    struct Heard {
        std::string body;
        std::optional<Error> error;
        std::optional<int> status;
        Timeline timeline;
        std::thread::id serializedOn;
        std::thread::id completedOn;
    };

    /// Attaches a handler that notes what it hears.
    void listen(Request& request) {
        request.response([this](const ResponseContent& content, Timeline timeline) {
            Heard heard{content.body, content.error, {}, timeline, std::this_thread::get_id(), {}};
            if (content.response) {
                heard.status = content.response->statusCode;
            }
            return [this, heard = std::move(heard)]() mutable {
                heard.completedOn = std::this_thread::get_id();
                answers.push_back(std::move(heard));
            };
        });
    }

    void watchProgress(Request& request) {
        request.progress([this](std::int64_t bytes, std::int64_t total, std::int64_t expected) {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            progress.push_back({bytes, total, expected});
        });
    }

    bool waitForAnswers(std::size_t count) {
        return runUntil([&] { return answers.size() >= count; });
    }

    using Report = std::vector<std::int64_t>;
    std::shared_ptr<testing::ManualTransport> transport =
        std::make_shared<testing::ManualTransport>();
    Manager manager{transport};
    std::vector<Heard> answers;
    std::vector<Report> progress;
    const std::thread::id mainThread = std::this_thread::get_id();
};

TEST_F(RequestTest, DeliversTheAnswerOnTheMainQueue) {
    const auto request = manager.request(FixedRequest());
    listen(*request);
    transport->head(200, 5);
    EXPECT_TRUE(transport->data("he"));
    EXPECT_TRUE(transport->data("llo"));
    transport->complete();
    EXPECT_TRUE(answers.empty());
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_EQ(answers[0].body, "hello");
    EXPECT_EQ(answers[0].status, 200);
    EXPECT_FALSE(answers[0].error);
    EXPECT_EQ(answers[0].completedOn, mainThread);
    EXPECT_NE(answers[0].serializedOn, mainThread);
    runFor(10ms);
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(RequestTest, KeepsTheRequestAsItWasSent) {
    FixedRequest convertible("https://h/x?y");
    convertible.request.headerFields.emplace("A", "b");
    const auto request = manager.request(convertible);
    EXPECT_EQ(request->request().url, URL::parse("https://h/x?y"));
    ASSERT_EQ(transport->requests.size(), 1U);
    EXPECT_EQ(transport->requests[0].headerFields.at("a"), "b");
    transport->complete();
}

TEST_F(RequestTest, HandlersAreServedInTheOrderTheyWereAttached) {
    const auto request = manager.request(FixedRequest());
    std::vector<int> order;
    const auto attach = [&](int number) {
        request->response([&order, number](const ResponseContent&, Timeline) {
            return [&order, number] { order.push_back(number); };
        });
    };
    attach(1);
    attach(2);
    transport->head(200);
    transport->complete();
    attach(3);
    attach(4);
    ASSERT_TRUE(runUntil([&] { return order.size() == 4; }));
    attach(5);
    ASSERT_TRUE(runUntil([&] { return order.size() == 5; }));
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(RequestTest, SerializersOfOneManagerShareOneThread) {
    for (int i = 0; i < 5; ++i) {
        const auto request = manager.request(FixedRequest());
        listen(*request);
        listen(*request);
        transport->complete();
    }
    ASSERT_TRUE(waitForAnswers(10));
    for (const Heard& heard : answers) {
        EXPECT_EQ(heard.serializedOn, answers[0].serializedOn);
        EXPECT_EQ(heard.completedOn, mainThread);
    }
}

TEST_F(RequestTest, AHandlerThatComesLateIsServedAllTheSame) {
    const auto request = manager.request(FixedRequest());
    transport->head(404);
    transport->data("gone");
    transport->complete();
    runFor(10ms);
    listen(*request);
    EXPECT_TRUE(answers.empty());
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_EQ(answers[0].body, "gone");
    EXPECT_EQ(answers[0].status, 404) << "a status is no error here";
    EXPECT_FALSE(answers[0].error);
    EXPECT_EQ(answers[0].completedOn, mainThread);
}

TEST_F(RequestTest, PassesTheTransportsErrorOn) {
    const auto request = manager.request(FixedRequest());
    listen(*request);
    transport->head(200, 100);
    transport->data("half");
    transport->complete(httpError(HTTPErrorCode::ConnectionLost, "lost"));
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(isHTTPError(*answers[0].error, HTTPErrorCode::ConnectionLost));
    EXPECT_EQ(answers[0].status, 200);
}

TEST_F(RequestTest, ReportsReceivedBytesBeforeTheCompletion) {
    const auto request = manager.request(FixedRequest());
    watchProgress(*request);
    listen(*request);
    transport->head(200, 10);
    transport->data("1234");
    ASSERT_TRUE(runUntil([&] { return progress.size() == 1; }));
    transport->data("567890");
    transport->complete();
    ASSERT_TRUE(runUntil([&] {
        EXPECT_TRUE(answers.empty() || progress.size() == 2);
        return !answers.empty();
    }));
    EXPECT_THAT(progress, ElementsAre(Report{4, 4, 10}, Report{6, 10, 10}));
}

TEST_F(RequestTest, MergesReportsThatTheMainQueueIsTooSlowFor) {
    const auto request = manager.request(FixedRequest());
    watchProgress(*request);
    listen(*request);
    transport->head(200, -1);
    for (int i = 0; i < 5; ++i) {
        transport->data("xy");
    }
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_THAT(progress, ElementsAre(Report{10, 10, -1})) << "an unknown total is -1";
}

TEST_F(RequestTest, WakesTheMainQueueForProgressOnlyWhereSomebodyListens) {
    std::vector<MainQueue::Task> posted;
    const auto request = manager.request(FixedRequest());
    transport->head(200, 6);
    MainQueue::main().setExecutor([&](MainQueue::Task task) { posted.push_back(std::move(task)); });
    transport->data("1234");
    EXPECT_TRUE(posted.empty());
    MainQueue::main().setExecutor({});
    watchProgress(*request);
    ASSERT_TRUE(runUntil([&] { return progress.size() == 1; })) << "told of what moved before";
    transport->data("56");
    ASSERT_TRUE(runUntil([&] { return progress.size() == 2; }));
    EXPECT_THAT(progress, ElementsAre(Report{4, 4, 6}, Report{2, 6, 6}));
    transport->complete();
}

TEST_F(RequestTest, ReportsNothingWhenNothingMoved) {
    const auto request = manager.request(FixedRequest());
    watchProgress(*request);
    listen(*request);
    transport->sent(0, 0);
    transport->head(204, 0);
    transport->data("");
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(progress.empty());
}

TEST_F(RequestTest, AnUploadReportsSentBytesAndNoOthers) {
    const auto request = manager.upload(FixedRequest(), Data("12345678"));
    watchProgress(*request);
    listen(*request);
    ASSERT_TRUE(transport->requests[0].body);
    EXPECT_EQ(transport->requests[0].body->text(), "12345678");
    transport->sent(3, 8);
    ASSERT_TRUE(runUntil([&] { return progress.size() == 1; }));
    transport->sent(8, 8);
    transport->head(200, 4);
    transport->data("done");
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_THAT(progress, ElementsAre(Report{3, 3, 8}, Report{5, 8, 8}));
    EXPECT_EQ(answers[0].body, "done");
}

TEST_F(RequestTest, AnUploadThatStartsAgainReportsNothingUntilItGetsFurther) {
    const auto request = manager.upload(FixedRequest(), Data("12345678"));
    watchProgress(*request);
    listen(*request);
    transport->sent(5, 8);
    ASSERT_TRUE(runUntil([&] { return progress.size() == 1; }));
    for (const std::int64_t again : {0, 2, 5}) { // a redirect's second leg
        transport->sent(again, 8);
        runFor(1ms);
    }
    EXPECT_EQ(progress.size(), 1U);
    transport->sent(6, 8);
    ASSERT_TRUE(runUntil([&] { return progress.size() == 2; }));
    transport->sent(8, 8);
    transport->sent(1, 8); // before the main queue has told of the 8
    transport->head(200, 0);
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_THAT(progress, ElementsAre(Report{5, 5, 8}, Report{1, 6, 8}, Report{2, 8, 8}));
}

TEST_F(RequestTest, ARequestWithABodyReportsReceivedBytesOnly) {
    FixedRequest convertible;
    convertible.request.body = Data("body");
    const auto request = manager.request(convertible);
    watchProgress(*request);
    listen(*request);
    transport->sent(4, 4);
    transport->head(200, 2);
    transport->data("ok");
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_THAT(progress, ElementsAre(Report{2, 2, 2}));
}

TEST_F(RequestTest, TheProgressObserverCanBeReplaced) {
    const auto request = manager.request(FixedRequest());
    request->progress([](auto, auto, auto) { FAIL() << "was replaced"; });
    transport->head(200, 4);
    transport->data("ab");
    watchProgress(*request);
    listen(*request);
    transport->data("cd");
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_THAT(progress, ElementsAre(Report{4, 4, 4}));
}

TEST_F(RequestTest, LetsTheObserverGoAfterTheCompletion) {
    auto request = manager.request(FixedRequest());
    const std::weak_ptr<Request> watch = request;
    request->progress([request](auto, auto, auto) {}); // holds the request itself
    listen(*request);
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    runFor(1ms);
    request->progress([request](auto, auto, auto) {});
    request.reset();
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

TEST_F(RequestTest, AnObserverMayCancelTheRequestAsItGoes) {
    struct Canceller {
        std::shared_ptr<Request> request;
        ~Canceller() { request->cancel(); }
    };
    const auto request = manager.request(FixedRequest());
    auto canceller = std::make_shared<Canceller>();
    canceller->request = request;
    request->progress([canceller = std::move(canceller)](auto, auto, auto) {});
    request->progress({});
    EXPECT_EQ(transport->cancelCount, 1);
    transport->complete();
    runFor(1ms);
}

TEST_F(RequestTest, StaysAliveUntilItHasCompleted) {
    auto request = manager.request(FixedRequest());
    const std::weak_ptr<Request> watch = request;
    listen(*request);
    request.reset();
    EXPECT_FALSE(watch.expired());
    transport->head(200);
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

TEST_F(RequestTest, CancelReachesTheExchangeUntilTheEnd) {
    const auto request = manager.request(FixedRequest());
    listen(*request);
    request->cancel();
    EXPECT_EQ(transport->cancelCount, 1);
    transport->complete(httpError(HTTPErrorCode::Cancelled, "cancelled"));
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(isHTTPError(*answers[0].error, HTTPErrorCode::Cancelled));
    request->cancel();
    EXPECT_EQ(transport->cancelCount, 1) << "after the end it does nothing";
    runFor(5ms);
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(RequestTest, TellsWhenTheStagesHappened) {
    const auto request = manager.request(FixedRequest());
    request->response<int>(
        [](const ResponseContent&) -> Result<int> {
            std::this_thread::sleep_for(5ms);
            return 7;
        },
        [&](Result<int> result, Timeline timeline) {
            EXPECT_EQ(result.value(), 7);
            answers.push_back({"", {}, {}, timeline, {}, {}});
        });
    std::this_thread::sleep_for(5ms);
    transport->head(200);
    std::this_thread::sleep_for(5ms);
    transport->complete();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_GE(answers[0].timeline.latency(), 5ms);
    EXPECT_GE(answers[0].timeline.requestDuration(), 10ms);
    EXPECT_GE(answers[0].timeline.serializationDuration(), 5ms);
}

TEST_F(RequestTest, WithoutAHeadTheFirstByteCameAtTheEnd) {
    const auto request = manager.request(FixedRequest());
    listen(*request);
    transport->complete(httpError(HTTPErrorCode::TimedOut, "slow"));
    ASSERT_TRUE(waitForAnswers(1));
    const Timeline& timeline = answers[0].timeline;
    EXPECT_EQ(timeline.initialResponseTime, timeline.requestCompletedTime);
    EXPECT_EQ(timeline.serializationCompletedTime, timeline.requestCompletedTime);
    EXPECT_FALSE(answers[0].status);
}

TEST_F(RequestTest, ASerializedValueNeedNotBeCopyable) {
    const auto request = manager.request(FixedRequest());
    std::unique_ptr<std::string> taken;
    request->response<std::unique_ptr<std::string>>(
        [](const ResponseContent& content) -> Result<std::unique_ptr<std::string>> {
            return std::make_unique<std::string>(content.body);
        },
        [&](Result<std::unique_ptr<std::string>> result, Timeline) {
            taken = std::move(result.value());
        });
    transport->head(200);
    transport->data("x");
    transport->complete();
    ASSERT_TRUE(runUntil([&] { return taken != nullptr; }));
    EXPECT_EQ(*taken, "x");
}

TEST_F(RequestTest, TheBodyHasSpareRoomBehindIt) {
    for (const std::size_t size : {0U, 1U, 15U, 64U, 1000U, 4096U, 100'000U}) {
        for (const std::int64_t promised :
             {std::int64_t{-1}, static_cast<std::int64_t>(size), std::int64_t{3}, INT64_MAX}) {
            const auto request = manager.request(FixedRequest());
            std::atomic<std::size_t> room = 0;
            request->response([&](const ResponseContent& content, Timeline) {
                room = content.body.capacity() - content.body.size();
                return [&] { answers.emplace_back(); };
            });
            transport->head(200, promised);
            transport->data(std::string(size, 'x'));
            transport->complete();
            answers.clear();
            ASSERT_TRUE(waitForAnswers(1));
            EXPECT_GE(room, 64U) << size << ' ' << promised;
        }
    }
}

TEST_F(RequestTest, HandlersMayBeAttachedFromAnyThreadAtAnyTime) {
    constexpr int count = 200;
    std::atomic<int> served = 0;
    const auto request = manager.request(FixedRequest());
    std::thread other([&] {
        for (int i = 0; i < count; ++i) {
            request->response([&](const ResponseContent&, Timeline) { return [&] { ++served; }; });
        }
    });
    transport->head(200);
    transport->complete();
    EXPECT_TRUE(runUntil([&] { return served == count; }));
    other.join();
    runFor(5ms);
    EXPECT_EQ(served, count);
}

} // namespace KeloAPI
