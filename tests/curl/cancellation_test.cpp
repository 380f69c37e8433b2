#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <atomic>
#include <semaphore>

namespace KeloAPI::testing {
namespace {

class CancellationTest : public TransportTest {
protected:
    /// A cancellation that came late would find the request timed out.
    static void expectCancelled(const Observer& observer) {
        EXPECT_TRUE(observer->wait());
        EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Cancelled));
        EXPECT_EQ(observer->completions, 1);
        EXPECT_EQ(observer->callsAfterEnd, 0);
    }

    /// Cancels it at the moment that `reached` tells of.
    void cancelOnceReached(const URLRequest& request) {
        const auto exchange = transport->start(request, observer);
        ASSERT_TRUE(reached.try_acquire_for(timeLimit));
        exchange->cancel();
        expectCancelled(observer);
    }

    std::counting_semaphore<> reached{0};
    RawServer silent{[this](RawConnection& connection) {
        connection.read(1);
        reached.release();
        connection.waitForClose();
    }};
    RawServer beginning{answeringAndWaiting("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome")};
    RawServer quick{answeringAll(okResponse())};
    std::shared_ptr<CurlTransport> transport = unpinned();
    Observer observer = std::make_shared<RecordingObserver>();
};

TEST_F(CancellationTest, AtOnce) {
    reached.release();
    cancelOnceReached(get(silent.url("/")));
    EXPECT_NE(observer->thread, std::this_thread::get_id());
}

TEST_F(CancellationTest, WhileConnecting) {
    // The server has TLS's greeting and never answers it.
    cancelOnceReached(get(silent.url("/", "https")));
}

TEST_F(CancellationTest, WhileWaitingForTheResponse) {
    cancelOnceReached(get(silent.url("/")));
    EXPECT_TRUE(observer->responses.empty());
}

TEST_F(CancellationTest, WhileTheBodyArrives) {
    observer->onData = [this] {
        reached.release();
        return true;
    };
    cancelOnceReached(get(beginning.url("/")));
    EXPECT_EQ(observer->body, "some");
}

TEST_F(CancellationTest, WhileTheBodyGoesOut) {
    const RawServer deaf(keepingDeaf());
    observer->onSent = [this] { reached.release(); };
    cancelOnceReached(with(Method::POST, deaf.url("/"), largeBody()));
}

TEST_F(CancellationTest, FromItsOwnCallbacks) {
    std::shared_ptr<Exchange> exchange;
    observer->onResponse = [&] {
        reached.acquire();
        exchange->cancel();
        exchange->cancel();
    };
    exchange = transport->start(get(beginning.url("/")), observer);
    reached.release();
    expectCancelled(observer);
    EXPECT_EQ(observer->body, "") << "nothing is heard after the cancellation";
}

TEST_F(CancellationTest, AfterTheEndDoesNothing) {
    const auto exchange = transport->start(get(quick.url("/")), observer);
    ASSERT_TRUE(observer->wait());
    exchange->cancel();
    exchange->cancel();
    EXPECT_TRUE(succeeded(send(*transport, get(quick.url("/")))));
    // And not after the transport either.
    transport.reset();
    exchange->cancel();
    EXPECT_EQ(observer->completions, 1);
    EXPECT_FALSE(observer->error);
}

TEST_F(CancellationTest, OfARedirectOnItsWayBetweenLanes) {
    // The redirect leads to another policy's lane; whenever the cancellation comes, it is heard.
    RawServer away(answeringAll("HTTP/1.1 302 Found\r\nContent-Length: 0\r\n"
                                "Location: http://localhost:1/\r\n\r\n"));
    const auto lanes = pinning("localhost", {TestCertificate::authority().certificate()});
    for (int i = 0; i < 200; ++i) {
        auto each = std::make_shared<RecordingObserver>();
        const auto exchange = lanes->start(get(away.url("/")), each);
        std::this_thread::sleep_for(std::chrono::microseconds(i * 10));
        exchange->cancel();
        ASSERT_TRUE(each->wait());
        EXPECT_EQ(each->completions, 1);
        EXPECT_TRUE(failedWith(each, HTTPErrorCode::Cancelled) ||
                    failedWith(each, HTTPErrorCode::CannotConnect));
    }
}

TEST_F(CancellationTest, ByTheTransportsEnd) {
    const auto observers = startMany(*transport, get(silent.url("/")), 10);
    ASSERT_TRUE(reached.try_acquire_for(timeLimit));
    transport.reset();
    for (const Observer& each : observers) {
        EXPECT_TRUE(each->hasCompleted()) << "all have heard when the destructor returns";
        expectCancelled(each);
    }
}

TEST_F(CancellationTest, ByTheTransportsEndInsideACallback) {
    for (const bool isLast : {false, true}) {
        transport = unpinned();
        const auto waiting = start(*transport, get(silent.url("/")));
        ASSERT_TRUE(reached.try_acquire_for(timeLimit));
        std::binary_semaphore given{0};
        observer = std::make_shared<RecordingObserver>();
        (isLast ? observer->onComplete : observer->onResponse) = [&] {
            given.acquire();
            transport.reset();
        };
        transport->start(get(isLast ? quick.url("/") : beginning.url("/")), observer);
        given.release();
        ASSERT_TRUE(observer->wait());
        EXPECT_TRUE(isLast ? succeeded(observer) : failedWith(observer, HTTPErrorCode::Cancelled));
        expectCancelled(waiting);
    }
}

TEST_F(CancellationTest, ManyFromManyThreads) {
    constexpr int each = 50;
    std::vector<std::thread> threads;
    threads.reserve(4);
    std::atomic<int> completed = 0;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < each; ++i) {
                auto heard = std::make_shared<RecordingObserver>();
                const auto exchange = transport->start(get(silent.url("/")), heard);
                if ((i + t) % 3 != 0) {
                    std::this_thread::yield();
                }
                exchange->cancel();
                if (heard->wait() && heard->completions == 1) {
                    ++completed;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(completed, 4 * each);
}

} // namespace
} // namespace KeloAPI::testing
