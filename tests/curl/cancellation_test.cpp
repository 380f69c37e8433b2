#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <atomic>
#include <semaphore>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;

class CancellationTest : public TransportTest {
protected:
    static void expectCancelled(const Observer& observer) {
        EXPECT_TRUE(observer->wait(2s)) << "the cancellation came late or never";
        EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Cancelled));
        EXPECT_EQ(observer->completions, 1);
        EXPECT_EQ(observer->callsAfterEnd, 0);
    }

    std::counting_semaphore<64> reached{0};
    std::string beginning;
    RawServer server{[this](RawConnection& connection) {
        connection.readRequest();
        if (!beginning.empty()) {
            connection.write(beginning);
        }
        reached.release();
        connection.waitForClose();
    }};
    std::shared_ptr<CurlTransport> transport = unpinned();
    Observer observer = std::make_shared<RecordingObserver>();
};

TEST_F(CancellationTest, AtOnce) {
    const auto exchange = transport->start(get(server.url("/")), observer);
    exchange->cancel();
    expectCancelled(observer);
    EXPECT_NE(observer->thread, std::this_thread::get_id());
}

TEST_F(CancellationTest, WhileConnecting) {
    // TLS to a server that never answers the greeting.
    const auto exchange = transport->start(get(server.url("/", "https")), observer);
    std::this_thread::sleep_for(50ms);
    exchange->cancel();
    expectCancelled(observer);
}

TEST_F(CancellationTest, WhileWaitingForTheAnswer) {
    const auto exchange = transport->start(get(server.url("/")), observer);
    reached.acquire();
    exchange->cancel();
    expectCancelled(observer);
    EXPECT_TRUE(observer->responses.empty());
}

TEST_F(CancellationTest, WhileTheBodyArrives) {
    beginning = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome";
    std::binary_semaphore arrived{0};
    observer->onData = [&] {
        arrived.release();
        return true;
    };
    const auto exchange = transport->start(get(server.url("/")), observer);
    arrived.acquire();
    exchange->cancel();
    expectCancelled(observer);
    EXPECT_EQ(observer->body, "some");
}

TEST_F(CancellationTest, WhileTheBodyGoesOut) {
    std::binary_semaphore sent{0};
    std::atomic<bool> first = true;
    observer->onSent = [&] {
        if (first.exchange(false)) {
            sent.release();
        }
    };
    RawServer deaf([](RawConnection& connection) {
        std::this_thread::sleep_for(100ms);
        connection.waitForClose();
    });
    const auto exchange =
        transport->start(with(Method::POST, deaf.url("/"), largeBody()), observer);
    sent.acquire();
    exchange->cancel();
    expectCancelled(observer);
}

TEST_F(CancellationTest, FromItsOwnCallbacks) {
    beginning = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nsome";
    std::shared_ptr<Exchange> exchange;
    std::binary_semaphore ready{0};
    observer->onResponse = [&] {
        ready.acquire();
        exchange->cancel();
        exchange->cancel();
    };
    exchange = transport->start(get(server.url("/")), observer);
    ready.release();
    expectCancelled(observer);
    EXPECT_EQ(observer->body, "") << "nothing is heard after the cancellation";
}

TEST_F(CancellationTest, AfterTheEndDoesNothing) {
    RawServer quick([](RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        }
    });
    const auto exchange = transport->start(get(quick.url("/")), observer);
    ASSERT_TRUE(observer->wait());
    exchange->cancel();
    exchange->cancel();
    EXPECT_TRUE(succeeded(send(*transport, get(quick.url("/")))));
    EXPECT_EQ(observer->completions, 1);
    EXPECT_FALSE(observer->error);
    // And not after the transport either.
    transport.reset();
    exchange->cancel();
    EXPECT_EQ(observer->completions, 1);
}

TEST_F(CancellationTest, OfARedirectOnItsWayBetweenLanes) {
    // The redirect leads to another policy's lane; whenever the cancellation comes, it is heard.
    RawServer away([](RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            connection.write(
                "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: http://localhost:" +
                std::string("1/\r\n\r\n"));
        }
    });
    const auto lanes = pinning("localhost", {TestCertificate::authority().certificate()});
    for (int i = 0; i < 200; ++i) {
        auto each = std::make_shared<RecordingObserver>();
        const auto exchange = lanes->start(get(away.url("/")), each);
        std::this_thread::sleep_for(std::chrono::microseconds(i * 10));
        exchange->cancel();
        ASSERT_TRUE(each->wait(2s));
        EXPECT_EQ(each->completions, 1);
        EXPECT_TRUE(failedWith(each, HTTPErrorCode::Cancelled) ||
                    failedWith(each, HTTPErrorCode::CannotConnect));
    }
}

TEST_F(CancellationTest, ByTheTransportsEnd) {
    std::vector<Observer> observers;
    for (int i = 0; i < 10; ++i) {
        observers.push_back(std::make_shared<RecordingObserver>());
        transport->start(get(server.url("/")), observers.back());
    }
    reached.acquire();
    transport.reset();
    for (const Observer& each : observers) {
        EXPECT_TRUE(each->hasCompleted()) << "all have heard when the destructor returns";
        expectCancelled(each);
    }
}

TEST_F(CancellationTest, ByTheTransportsEndInsideACallback) {
    RawServer quick([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        connection.waitForClose();
    });
    auto waiting = std::make_shared<RecordingObserver>();
    transport->start(get(server.url("/")), waiting);
    reached.acquire();
    std::binary_semaphore given{0};
    observer->onComplete = [&] {
        given.acquire();
        transport.reset();
    };
    transport->start(get(quick.url("/")), observer);
    given.release();
    ASSERT_TRUE(observer->wait());
    EXPECT_FALSE(observer->error);
    expectCancelled(waiting);
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
                const auto exchange = transport->start(get(server.url("/")), heard);
                if ((i + t) % 3 != 0) {
                    std::this_thread::yield();
                }
                exchange->cancel();
                if (heard->wait(5s) && heard->completions == 1) {
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
