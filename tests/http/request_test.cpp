#include "support/HeardAnswers.hpp"
#include "support/ManualTransport.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <semaphore>
#include <thread>

namespace KeloAPI::testing {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class RequestTest : public ::testing::Test {
protected:
    using Report = std::vector<std::int64_t>;

    /// A request whose answers and progress are noted.
    std::shared_ptr<Request> send(const FixedRequest& convertible = FixedRequest()) {
        return listenTo(manager.request(convertible));
    }
    std::shared_ptr<Request> listenTo(std::shared_ptr<Request> request) {
        watchProgress(*request);
        return answers.listenTo(std::move(request));
    }
    void watchProgress(Request& request) {
        request.progress([this](std::int64_t bytes, std::int64_t total, std::int64_t expected) {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            progress.push_back({bytes, total, expected});
        });
    }

    bool waitForReports(std::size_t count) {
        return runUntil([&] { return progress.size() >= count; });
    }
    /// Waits until all that an ended request has posted so far has been heard.
    static void settle(Request& request) {
        bool settled = false;
        request.response([&](const ResponseContent&, Timeline) { return [&] { settled = true; }; });
        EXPECT_TRUE(runUntil([&] { return settled; }));
    }

    std::shared_ptr<ManualTransport> transport = std::make_shared<ManualTransport>();
    Manager manager{transport};
    HeardAnswers answers;
    std::vector<Report> progress;
    const std::thread::id mainThread = std::this_thread::get_id();
};

TEST_F(RequestTest, DeliversTheAnswerOnceToEachHandlerOnTheMainQueue) {
    FixedRequest convertible("https://h/x?y");
    convertible.request.headerFields.emplace("A", "b");
    const auto request = send(convertible);
    EXPECT_EQ(request->request().url, URL::parse("https://h/x?y"));
    ASSERT_EQ(transport->requests.size(), 1U);
    EXPECT_EQ(transport->requests[0].headerFields.at("a"), "b");
    transport->head(404, 5);
    EXPECT_TRUE(transport->data("he"));
    EXPECT_TRUE(transport->data("llo"));
    transport->complete();
    EXPECT_TRUE(answers.empty());
    settle(*request);
    EXPECT_EQ(answers.size(), 1U);
    answers.listenTo(request);
    EXPECT_EQ(answers.size(), 1U);
    settle(*request);
    ASSERT_EQ(answers.size(), 2U) << "a handler that comes late is served all the same";
    for (const HeardAnswer& heard : answers) {
        EXPECT_EQ(heard.body, "hello");
        EXPECT_EQ(heard.status, 404) << "a status is no error here";
        EXPECT_FALSE(heard.error);
        EXPECT_EQ(heard.completedOn, mainThread);
        EXPECT_NE(heard.serializedOn, mainThread);
    }
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

TEST_F(RequestTest, PassesTheTransportsErrorOn) {
    for (const bool hasHead : {true, false}) {
        answers.clear();
        send();
        if (hasHead) {
            transport->head(200, 100);
            transport->data("half");
        }
        transport->complete(httpError(HTTPErrorCode::ConnectionLost, "lost"));
        ASSERT_TRUE(answers.waitFor(1));
        EXPECT_TRUE(answers[0].failedWith(HTTPErrorCode::ConnectionLost));
        EXPECT_EQ(answers[0].status, hasHead ? std::optional(200) : std::nullopt);
    }
    const Timeline& timeline = answers[0].timeline; // without a head
    EXPECT_EQ(timeline.initialResponseTime, timeline.requestCompletedTime);
    EXPECT_EQ(timeline.serializationCompletedTime, timeline.requestCompletedTime);
}

TEST_F(RequestTest, ReportsReceivedBytesAndNothingElseBeforeTheCompletion) {
    FixedRequest withBody;
    withBody.request.body = Data("body");
    // Where it is awaited each run is reported, else what moved meanwhile at once.
    const struct {
        std::vector<const char*> data;
        std::int64_t length;
        bool isAwaited;
        std::vector<Report> reports;
    } table[] = {
        {{"1234", "567890"}, 10, true, {Report{4, 4, 10}, Report{6, 10, 10}}},
        {{"xy", "xy", "xy", "xy", "xy"}, -1, false, {Report{10, 10, -1}}},
        {{"ok"}, -1, false, {Report{2, 2, -1}}},
        {{""}, -1, false, {}},
    };
    for (const auto& one : table) {
        answers.clear();
        progress.clear();
        send(withBody);
        transport->sent(0, 0);
        transport->sent(4, 4); // no upload's: not reported
        transport->head(200, one.length);
        for (const char* bytes : one.data) {
            transport->data(bytes);
            ASSERT_TRUE(!one.isAwaited || waitForReports(progress.size() + 1));
        }
        transport->complete();
        ASSERT_TRUE(runUntil([&] {
            EXPECT_TRUE(answers.empty() || progress.size() == one.reports.size());
            return !answers.empty();
        }));
        EXPECT_THAT(progress, ElementsAreArray(one.reports));
    }
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
    ASSERT_TRUE(waitForReports(1)) << "told of what moved before";
    transport->data("56");
    ASSERT_TRUE(waitForReports(2));
    EXPECT_THAT(progress, ElementsAre(Report{4, 4, 6}, Report{2, 6, 6}));
    transport->complete();
}

TEST_F(RequestTest, AnUploadReportsSentBytesOnlyAndEachOnce) {
    listenTo(manager.upload(FixedRequest(), Data("12345678")));
    transport->sent(0, 8);
    transport->sent(5, 8);
    ASSERT_TRUE(waitForReports(1));
    for (const std::int64_t again : {0, 2, 5}) { // a redirect's second leg
        transport->sent(again, 8);
        MainQueue::main().drain();
    }
    EXPECT_EQ(progress.size(), 1U);
    transport->sent(6, 8);
    ASSERT_TRUE(waitForReports(2));
    transport->sent(8, 8);
    transport->sent(1, 8); // before the main queue has told of the 8
    transport->answer("done");
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_THAT(progress, ElementsAre(Report{5, 5, 8}, Report{1, 6, 8}, Report{2, 8, 8}));
    EXPECT_EQ(answers[0].body, "done");
}

TEST_F(RequestTest, TheProgressObserverCanBeReplaced) {
    const auto request = manager.request(FixedRequest());
    request->progress([](auto, auto, auto) { FAIL() << "was replaced"; });
    transport->head(200, 4);
    transport->data("ab");
    listenTo(request);
    transport->data("cd");
    transport->complete();
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_THAT(progress, ElementsAre(Report{4, 4, 4}));
}

TEST_F(RequestTest, AnObserverThatComesBehindTheResponseHearsOfItBeforeTheCompletion) {
    const auto request = manager.request(FixedRequest());
    bool isComplete = false;
    request->response(
        [&](const ResponseContent&, Timeline) {
            return [&] {
                EXPECT_THAT(progress, ElementsAre(Report{4, 4, 4}));
                isComplete = true;
            };
        },
        ReadingPlace::WhereItArrives);
    transport->head(200, 4);
    transport->data("1234");
    transport->complete();
    watchProgress(*request);
    ASSERT_TRUE(runUntil([&] { return isComplete; }));
    MainQueue::main().drain();
    EXPECT_EQ(progress.size(), 1U);
}

TEST_F(RequestTest, LetsTheObserverGoAfterTheCompletion) {
    auto request = manager.request(FixedRequest());
    const std::weak_ptr<Request> watch = request;
    request->progress([request](auto, auto, auto) {}); // holds the request itself
    transport->complete();
    settle(*request);
    MainQueue::main().drain();
    request->progress([request](auto, auto, auto) {});
    request.reset();
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

TEST_F(RequestTest, KeepsACompanionUntilTheCompletionHasRun) {
    auto companion = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = companion;
    bool wasThere = false;
    const auto request = manager.request(FixedRequest());
    request->keep(std::move(companion));
    request->response(
        [&](const ResponseContent&, Timeline) { return [&] { wasThere = !watch.expired(); }; });
    transport->answer("short");
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
    EXPECT_TRUE(wasThere);
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
    settle(*request);
}

TEST_F(RequestTest, StaysAliveUntilItHasCompleted) {
    const std::weak_ptr<Request> watch = send();
    EXPECT_FALSE(watch.expired());
    transport->head(200);
    transport->complete();
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_TRUE(runUntil([&] { return watch.expired(); }));
}

TEST_F(RequestTest, CancelReachesTheExchangeUntilTheEnd) {
    const auto request = send();
    request->cancel();
    EXPECT_EQ(transport->cancelCount, 1);
    transport->complete(httpError(HTTPErrorCode::Cancelled, "cancelled"));
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_TRUE(answers[0].failedWith(HTTPErrorCode::Cancelled));
    request->cancel();
    EXPECT_EQ(transport->cancelCount, 1) << "after the end it does nothing";
    settle(*request);
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(RequestTest, MakesAValueThatNeedNotBeCopyableAndTellsWhenTheStagesHappened) {
    using Value = std::unique_ptr<std::string>;
    std::vector<Date> instants = {Date::now()};
    const auto request = manager.request(FixedRequest());
    Value taken;
    Timeline timeline;
    request->response<Value>(
        [&](const ResponseContent& content) -> Result<Value> {
            instants.push_back(Date::now());
            return std::make_unique<std::string>(content.body);
        },
        [&](Result<Value> result, Timeline told) {
            taken = std::move(result.value());
            timeline = told;
        });
    instants.push_back(Date::now());
    transport->head(200);
    instants.push_back(Date::now());
    transport->data("x");
    transport->complete();
    ASSERT_TRUE(runUntil([&] { return taken != nullptr; }));
    EXPECT_EQ(*taken, "x");
    const std::vector<Date> order = {instants.at(0), timeline.requestStartTime,
                                     instants.at(1), timeline.initialResponseTime,
                                     instants.at(2), timeline.requestCompletedTime,
                                     instants.at(3), timeline.serializationCompletedTime};
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(RequestTest, TheBodyHasSpareRoomBehindIt) {
    for (const std::size_t size : {0U, 1U, 15U, 64U, 1000U, 4096U, 100'000U}) {
        for (const std::int64_t promised :
             {std::int64_t{-1}, static_cast<std::int64_t>(size), std::int64_t{3}, INT64_MAX}) {
            const auto request = manager.request(FixedRequest());
            std::atomic<std::size_t> room = 0;
            request->response([&](const ResponseContent& content, Timeline) -> Request::Completion {
                room = content.body.capacity() - content.body.size();
                return nullptr;
            });
            transport->head(200, promised);
            transport->data(std::string(size, 'x'));
            transport->complete();
            settle(*request);
            EXPECT_GE(room, 64U) << size << ' ' << promised;
        }
    }
}

TEST_F(RequestTest, HandlersMayBeAttachedFromAnyThreadAtAnyTime) {
    constexpr int count = 200;
    std::atomic<int> served = 0;
    std::binary_semaphore underWay{0};
    const auto request = manager.request(FixedRequest());
    std::thread other([&] {
        for (int i = 0; i < count; ++i) {
            request->response([&](const ResponseContent&, Timeline) { return [&] { ++served; }; });
            if (i == count / 10) {
                underWay.release();
            }
        }
    });
    underWay.acquire();
    transport->head(200);
    transport->complete();
    other.join();
    settle(*request);
    EXPECT_EQ(served, count);
}

} // namespace KeloAPI::testing
