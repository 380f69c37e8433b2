#include "NginxTest.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "support/Shortage.hpp"
#include "TransportTest.hpp"

#include <array>
#include <semaphore>
#include <set>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;

/// A server that answers a request only when it is let, in the connection's turn.
class ConnectionLimitTest : public TransportTest {
protected:
    void TearDown() override {
        transport.reset();
        letAnswer(1000);
    }

    /// Answers a request once it may.
    void serve(RawConnection& connection, const std::string& redirectedPath = {}) {
        connection.serve([&](const std::string& request) {
            const std::string path = pathOf(request);
            reached.release();
            EXPECT_TRUE(answers.try_acquire_for(timeLimit));
            return path == redirectedPath ? "HTTP/1.1 302 Found\r\nLocation: /there\r\n"
                                            "Content-Length: 0\r\n\r\n"
                                          : okResponse();
        });
    }

    void useOneConnection() { transport = unpinned({.maxCallConnectionsPerHost = 1}); }

    std::vector<Observer> start(int count, std::chrono::milliseconds interval = timeLimit) {
        std::vector<Observer> observers;
        observers.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            auto request = get(server.url("/" + std::to_string(i)));
            request.timeoutInterval = interval;
            observers.push_back(std::make_shared<RecordingObserver>());
            exchanges.push_back(transport->start(request, observers.back()));
        }
        return observers;
    }

    static void await(std::counting_semaphore<>& event, int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(event.try_acquire_for(timeLimit)) << "of " << count << " only " << i;
        }
    }
    void awaitRequests(int count) { await(reached, count); }

    void letAnswer(int count) { answers.release(count); }

    /// The paths that were asked for, in their order.
    static std::vector<std::string> requested(const RawServer& of) {
        std::vector<std::string> paths;
        for (const std::string& request : of.received()) {
            paths.push_back(pathOf(request));
        }
        return paths;
    }

    std::counting_semaphore<> reached{0};
    std::counting_semaphore<> answers{0};
    RawServer server{[this](RawConnection& connection) { serve(connection); }};
    RawServer other{answeringAll(okResponse())};
    std::shared_ptr<CurlTransport> transport = unpinned();
    std::vector<std::shared_ptr<Exchange>> exchanges;
};

TEST_F(ConnectionLimitTest, SixToAHostCarryAnyNumberOfCallsAndOtherHostsDoNotWait) {
    const auto observers = start(300);
    awaitRequests(6);
    EXPECT_TRUE(succeeded(send(*transport, get(other.url("/")))));
    EXPECT_EQ(server.requests(), 6);
    letAnswer(300);
    expectAllSucceeded(observers);
    EXPECT_EQ(server.connections(), 6);
    EXPECT_EQ(server.requests(), 300);
}

TEST_F(ConnectionLimitTest, CallsToAHostThatDoesNotLetConnectHoldUpNoOther) {
    // TLS that nobody answers: whether calls can share a connection stays unknown.
    RawServer silent(keepingSilent());
    const auto held = startMany(*transport, get(silent.url("/", "https")), 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(succeeded(send(*transport, get(other.url("/")))));
    }
    EXPECT_FALSE(held.front()->hasCompleted());
}

TEST_F(ConnectionLimitTest, IsSetPerTransportAndARedirectedCallKeepsItsTurn) {
    RawServer redirecting([this](RawConnection& connection) { serve(connection, "/0"); });
    useOneConnection();
    std::vector<Observer> observers;
    for (const char* path : {"/0", "/1", "/2"}) {
        observers.push_back(TransportTest::start(*transport, get(redirecting.url(path))));
    }
    letAnswer(4);
    expectAllSucceeded(observers);
    EXPECT_EQ(requested(redirecting), (std::vector<std::string>{"/0", "/there", "/1", "/2"}))
        << "in the order in which they were started";
    EXPECT_EQ(redirecting.connections(), 1);
}

TEST_F(ConnectionLimitTest, WaitingCallsAreCancelledAtOnceAndEndWithTheTransport) {
    useOneConnection();
    const auto observers = start(4);
    const auto expectCancelled = [&](std::size_t index) {
        ASSERT_TRUE(observers[index]->wait());
        EXPECT_TRUE(failedWith(observers[index], HTTPErrorCode::Cancelled));
    };
    awaitRequests(1);
    exchanges[1]->cancel();
    expectCancelled(1);
    EXPECT_FALSE(observers[0]->hasCompleted());
    letAnswer(1);
    expectAllSucceeded({observers[0]});
    awaitRequests(1);
    transport.reset();
    expectCancelled(2);
    expectCancelled(3);
    EXPECT_EQ(requested(server), (std::vector<std::string>{"/0", "/2"}));
}

TEST_F(ConnectionLimitTest, ACallThatWaitsForAMuteHostTimesOutUnsent) {
    useOneConnection();
    const auto first = start(1);
    awaitRequests(1);
    const auto second = start(1, 300ms);
    ASSERT_TRUE(second[0]->wait());
    EXPECT_TRUE(failedWith(second[0], HTTPErrorCode::TimedOut));
    EXPECT_FALSE(first[0]->hasCompleted());
    letAnswer(1);
    expectAllSucceeded(first);
    // Had the second been sent or were it still to be sent, it would come before this one.
    const auto third = start(1);
    letAnswer(1);
    expectAllSucceeded(third);
    EXPECT_EQ(server.requests(), 2);
}

TEST_F(ConnectionLimitTest, TheClockOfACallRunsFromWhenItIsSentAndNotWhileBytesArrive) {
    // The first response comes in steps, each well within the time-out; all together take longer
    // than it, for this call and for the one that waits. The client's own thread writes what the
    // server says: no other thread's stall can hold it up.
    constexpr int steps = 15;
    std::atomic<RawConnection*> peer = nullptr;
    RawServer slow([&](RawConnection& connection) {
        connection.readRequest();
        peer = &connection;
        reached.release();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(steps) +
                         "\r\n\r\nx");
        connection.waitForClose();
    });
    useOneConnection();
    const auto first = std::make_shared<RecordingObserver>();
    first->onData = [&peer, step = 1]() mutable {
        std::this_thread::sleep_for(100ms);
        return step++ == steps || peer.load()->write("x");
    };
    const auto second = std::make_shared<RecordingObserver>();
    second->onSent = [&peer] { peer.load()->write(okResponse()); };
    auto request = with(Method::POST, slow.url("/"), "body");
    request.timeoutInterval = 1s;
    const auto begin = std::chrono::steady_clock::now();
    URLRequest stepwise = get(slow.url("/"));
    stepwise.timeoutInterval = request.timeoutInterval;
    transport->start(stepwise, first);
    awaitRequests(1);
    transport->start(request, second);
    expectAllSucceeded({first, second});
    EXPECT_GT(std::chrono::steady_clock::now() - begin, request.timeoutInterval);
    EXPECT_EQ(slow.connections(), 1);
}

class IdleConnectionsTest : public ConnectionLimitTest {
protected:
    IdleConnectionsTest() {
        transport = unpinned({.maxIdleConnections = 4}); // two for calls, as many for downloads
        for (auto& each : hosts) {
            each = std::make_unique<RawServer>([this](RawConnection& connection) {
                serve(connection);
                closed.release();
            });
        }
    }

    std::counting_semaphore<> closed{0};
    std::array<std::unique_ptr<RawServer>, 12> hosts;
};

TEST_F(IdleConnectionsTest, OnlyTheLastAreKept) {
    letAnswer(14);
    for (const auto& each : hosts) {
        EXPECT_TRUE(succeeded(send(*transport, get(each->url("/")))));
        std::this_thread::sleep_for(5ms); // libcurl tells the oldest connection by milliseconds
    }
    await(closed, 10);
    for (const std::size_t last : {10U, 11U}) {
        EXPECT_TRUE(succeeded(send(*transport, get(hosts.at(last)->url("/")))));
        EXPECT_EQ(hosts.at(last)->connections(), 1);
    }
}

TEST_F(IdleConnectionsTest, ABurstLeavesNoMoreThanTheLimit) {
    std::vector<Observer> observers;
    observers.reserve(hosts.size());
    for (const auto& each : hosts) {
        observers.push_back(TransportTest::start(*transport, get(each->url("/"))));
    }
    awaitRequests(12);
    letAnswer(12);
    expectAllSucceeded(observers);
    await(closed, 10);
}

TEST_F(ConnectionLimitTest, AFailedPollEndsNoCall) {
    if (isSanitized) {
        GTEST_SKIP() << "UndefinedBehaviorSanitizer checks types through a pipe of its own";
    }
    const auto observers = start(6);
    awaitRequests(6);
    // A poll of more than that many descriptors fails. The cancelled call brings the thread to its
    // next poll, and the first response to the one after it.
    const LoweredLimit few(RLIMIT_NOFILE, 4);
    const auto extra = start(1);
    exchanges.back()->cancel();
    ASSERT_TRUE(extra[0]->wait());
    letAnswer(6);
    expectAllSucceeded(observers);
}

using ConnectionLimitHTTP2Test = NginxTest;

TEST_F(ConnectionLimitHTTP2Test, SixToAHostCarryAnyNumberOfCalls) {
    // libcurl polls once for each stream, and 7.88 loses the list where that is too long.
    const LoweredLimit few(RLIMIT_NOFILE, isSanitized ? 1024 : 256);
    const auto transport = pinning("localhost", {leaf.certificate()});
    const auto observers = startMany(*transport, get(nginx->url("/quick")), 1000);
    expectAllSucceeded(observers);
    std::set<std::string> connections;
    for (const Observer& observer : observers) {
        connections.insert(observer->responses.at(0).headerFields.find("X-Connection")->second);
    }
    EXPECT_LE(connections.size(), 6U);
}

} // namespace
} // namespace KeloAPI::testing
