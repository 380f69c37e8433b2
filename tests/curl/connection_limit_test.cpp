#include "support/Nginx.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "TransportTest.hpp"

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <semaphore>
#include <set>
#include <thread>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view limitTestResponse = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

TransportSettings oneConnection() {
    TransportSettings settings;
    settings.maxCallConnectionsPerHost = 1;
    return settings;
}

/// The descriptors of this process are so few while the object lives.
class FewDescriptors {
public:
    explicit FewDescriptors(rlim_t few) {
        getrlimit(RLIMIT_NOFILE, &_before);
        const rlimit limit{few, _before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &_before); }

private:
    rlimit _before{};
};

/// A server that answers a request only when it is let, in the connection's turn.
class ConnectionLimitTest : public TransportTest {
protected:
    ~ConnectionLimitTest() override {
        transport.reset();
        letAnswer(1000);
    }

    void serve(RawConnection& connection) {
        for (std::string request = connection.readRequest(); !request.empty();
             request = connection.readRequest()) {
            {
                const std::lock_guard lock(mutex);
                paths.push_back(request.substr(4, request.find(' ', 4) - 4));
            }
            reached.release();
            if (!answers.try_acquire_for(30s) || !connection.write(limitTestResponse)) {
                return;
            }
        }
    }

    std::vector<Observer> start(int count, std::chrono::milliseconds interval = 30s) {
        std::vector<Observer> observers;
        for (int i = 0; i < count; ++i) {
            auto request = get(server.url("/" + std::to_string(i)));
            request.timeoutInterval = interval;
            observers.push_back(std::make_shared<RecordingObserver>());
            exchanges.push_back(transport->start(request, observers.back()));
        }
        return observers;
    }

    void awaitRequests(int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(reached.try_acquire_for(20s)) << "of " << count << " only " << i;
        }
    }

    void letAnswer(int count) { answers.release(count); }

    static void expectAll(const std::vector<Observer>& observers) {
        for (const Observer& observer : observers) {
            ASSERT_TRUE(observer->wait());
            EXPECT_TRUE(succeeded(observer));
        }
    }

    std::vector<std::string> requested() {
        const std::lock_guard lock(mutex);
        return paths;
    }

    std::mutex mutex;
    std::vector<std::string> paths;
    std::counting_semaphore<> reached{0};
    std::counting_semaphore<> answers{0};
    RawServer server{[this](RawConnection& connection) { serve(connection); }};
    RawServer other{[](RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            connection.write(limitTestResponse);
        }
    }};
    std::shared_ptr<CurlTransport> transport = unpinned();
    std::vector<std::shared_ptr<Exchange>> exchanges;
};

TEST_F(ConnectionLimitTest, SixToAHostCarryAnyNumberOfCalls) {
    const auto observers = start(300);
    awaitRequests(6);
    letAnswer(300);
    expectAll(observers);
    EXPECT_EQ(server.connections(), 6);
    EXPECT_EQ(requested().size(), 300U);
}

TEST_F(ConnectionLimitTest, CallsToOtherHostsDoNotWait) {
    const auto observers = start(30);
    awaitRequests(6);
    EXPECT_TRUE(succeeded(send(*transport, get(other.url("/")))));
    EXPECT_EQ(requested().size(), 6U);
    letAnswer(30);
    expectAll(observers);
}

TEST_F(ConnectionLimitTest, CallsToAHostThatDoesNotLetConnectHoldUpNoOther) {
    // TLS that nobody answers: whether calls can share a connection stays unknown.
    RawServer silent([](RawConnection& connection) { connection.waitForClose(); });
    std::vector<Observer> held;
    for (int i = 0; i < 10; ++i) {
        held.push_back(std::make_shared<RecordingObserver>());
        exchanges.push_back(transport->start(get(silent.url("/", "https")), held.back()));
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(succeeded(send(*transport, get(other.url("/")))));
    }
    EXPECT_FALSE(held.front()->hasCompleted());
}

TEST_F(ConnectionLimitTest, IsSetPerTransport) {
    transport = unpinned(oneConnection());
    const auto observers = start(10);
    letAnswer(10);
    expectAll(observers);
    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(requested(), (std::vector<std::string>{"/0", "/1", "/2", "/3", "/4", "/5", "/6", "/7",
                                                     "/8", "/9"}))
        << "in the order in which they were started";
}

TEST_F(ConnectionLimitTest, ARedirectedCallKeepsItsTurn) {
    RawServer redirecting([this](RawConnection& connection) {
        for (std::string request = connection.readRequest(); !request.empty();
             request = connection.readRequest()) {
            const std::string path = request.substr(4, request.find(' ', 4) - 4);
            {
                const std::lock_guard lock(mutex);
                paths.push_back(path);
            }
            answers.try_acquire_for(30s);
            connection.write(path == "/0" ? "HTTP/1.1 302 Found\r\nLocation: /there\r\n"
                                            "Content-Length: 0\r\n\r\n"
                                          : limitTestResponse);
        }
    });
    transport = unpinned(oneConnection());
    std::vector<Observer> observers;
    for (const char* path : {"/0", "/1", "/2"}) {
        observers.push_back(std::make_shared<RecordingObserver>());
        transport->start(get(redirecting.url(path)), observers.back());
    }
    letAnswer(4);
    expectAll(observers);
    EXPECT_EQ(requested(), (std::vector<std::string>{"/0", "/there", "/1", "/2"}));
}

TEST_F(ConnectionLimitTest, AWaitingCallIsCancelledAtOnce) {
    transport = unpinned(oneConnection());
    const auto observers = start(3);
    awaitRequests(1);
    exchanges[1]->cancel();
    ASSERT_TRUE(observers[1]->wait());
    EXPECT_TRUE(failedWith(observers[1], HTTPErrorCode::Cancelled));
    EXPECT_FALSE(observers[0]->hasCompleted());
    letAnswer(2);
    expectAll({observers[0], observers[2]});
    EXPECT_EQ(requested(), (std::vector<std::string>{"/0", "/2"}));
}

TEST_F(ConnectionLimitTest, WaitingCallsEndWithTheTransport) {
    transport = unpinned(oneConnection());
    const auto observers = start(3);
    awaitRequests(1);
    transport.reset();
    for (const Observer& observer : observers) {
        ASSERT_TRUE(observer->wait());
        EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Cancelled));
    }
}

TEST_F(ConnectionLimitTest, ACallThatWaitsForAMuteHostTimesOutUnsent) {
    transport = unpinned(oneConnection());
    const auto first = start(1);
    awaitRequests(1);
    const auto second = start(1, 300ms);
    ASSERT_TRUE(second[0]->wait());
    EXPECT_TRUE(failedWith(second[0], HTTPErrorCode::TimedOut));
    EXPECT_FALSE(first[0]->hasCompleted());
    letAnswer(1);
    expectAll(first);
    // Had the second been sent or were it still to be sent, it would come before this one.
    const auto third = start(1);
    letAnswer(1);
    expectAll(third);
    EXPECT_EQ(requested().size(), 2U);
}

TEST_F(ConnectionLimitTest, TheClockOfACallRunsFromWhenItIsSent) {
    // The first response comes in steps, each well within the time-out of the call that waits; all
    // together take longer than it. The client's own thread writes what the server says: no other
    // thread's stall can hold it up.
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
    transport = unpinned(oneConnection());
    const auto first = std::make_shared<RecordingObserver>();
    first->onData = [&peer, step = 1]() mutable {
        std::this_thread::sleep_for(100ms);
        return step++ == steps || peer.load()->write("x");
    };
    const auto second = std::make_shared<RecordingObserver>();
    second->onSent = [&peer] { peer.load()->write(limitTestResponse); };
    auto request = with(Method::POST, slow.url("/"), "body");
    request.timeoutInterval = 1s;
    transport->start(get(slow.url("/")), first);
    awaitRequests(1);
    const auto begin = std::chrono::steady_clock::now();
    transport->start(request, second);
    expectAll({first, second});
    EXPECT_GT(std::chrono::steady_clock::now() - begin, request.timeoutInterval);
    EXPECT_EQ(slow.connections(), 1);
}

TEST_F(ConnectionLimitTest, IdleConnectionsAreLimitedToo) {
    TransportSettings settings;
    settings.maxIdleConnections = 4; // two for calls, two for downloads
    transport = unpinned(settings);
    std::counting_semaphore<> closed{0};
    const auto handler = [&closed](RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            connection.write(limitTestResponse);
        }
        closed.release();
    };
    std::array<std::unique_ptr<RawServer>, 5> servers;
    for (auto& each : servers) {
        each = std::make_unique<RawServer>(handler);
        EXPECT_TRUE(succeeded(send(*transport, get(each->url("/")))));
        std::this_thread::sleep_for(5ms); // libcurl tells the oldest connection by milliseconds
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(closed.try_acquire_for(20s)) << "connection " << i << " was kept";
    }
    for (int i : {3, 4}) {
        EXPECT_TRUE(succeeded(send(*transport, get(servers[i]->url("/")))));
        EXPECT_EQ(servers[i]->connections(), 1) << "the last ones were kept";
    }
    transport.reset();
}

TEST_F(ConnectionLimitTest, ABurstLeavesNoMoreIdleConnectionsThanTheLimit) {
    constexpr int hosts = 12;
    TransportSettings settings;
    settings.maxIdleConnections = 4; // two for calls, two for downloads
    transport = unpinned(settings);
    std::counting_semaphore<> closed{0};
    std::array<std::unique_ptr<RawServer>, hosts> servers;
    std::vector<Observer> observers;
    for (auto& each : servers) {
        each = std::make_unique<RawServer>([&](RawConnection& connection) {
            serve(connection);
            closed.release();
        });
        observers.push_back(std::make_shared<RecordingObserver>());
        exchanges.push_back(transport->start(get(each->url("/")), observers.back()));
    }
    awaitRequests(hosts);
    letAnswer(hosts);
    expectAll(observers);
    for (int i = 0; i < hosts - 2; ++i) {
        EXPECT_TRUE(closed.try_acquire_for(20s)) << "connection " << i << " was kept";
    }
    transport.reset();
}

TEST_F(ConnectionLimitTest, AFailedPollEndsNoCall) {
    if (isSanitized) {
        GTEST_SKIP() << "UndefinedBehaviorSanitizer checks types through a pipe of its own";
    }
    const auto observers = start(6);
    awaitRequests(6);
    {
        // A poll of more than that many descriptors fails. The cancelled call brings the thread to
        // its next poll, and the first response to the one after it.
        const FewDescriptors few(4);
        const auto extra = start(1);
        exchanges.back()->cancel();
        ASSERT_TRUE(extra[0]->wait());
        letAnswer(6);
        expectAll(observers);
    }
}

TEST(ConnectionLimitHTTP2Test, SixToAHostCarryAnyNumberOfCalls) {
    if (!Nginx::isInstalled()) {
        GTEST_SKIP() << "nginx is not installed";
    }
    const auto leaf = TestCertificate::selfSigned({});
    const Nginx nginx(leaf);
    ASSERT_TRUE(nginx.isServing());
    const FewDescriptors few(256);
    CurlTransport transport(
        ServerTrustPolicyManager({{"localhost", PinCertificates{{leaf.certificate()}}}}));
    std::vector<std::shared_ptr<RecordingObserver>> observers;
    for (int i = 0; i < 1000; ++i) {
        URLRequest request;
        request.url = URL::parse(nginx.url("/quick"));
        observers.push_back(std::make_shared<RecordingObserver>());
        transport.start(request, observers.back());
    }
    std::set<std::string> connections;
    for (const auto& observer : observers) {
        ASSERT_TRUE(observer->wait());
        ASSERT_FALSE(observer->error) << observer->error->description();
        connections.insert(observer->responses.at(0).headerFields.find("X-Connection")->second);
    }
    EXPECT_LE(connections.size(), 6U);
}

} // namespace
} // namespace KeloAPI::testing
