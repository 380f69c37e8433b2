#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "support/TestServer.hpp"
#include "TransportTest.hpp"

#include <sys/resource.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <new>
#include <semaphore>
#include <set>

namespace KeloAPI::testing {
namespace {

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// In KiB.
long residentMemory() {
    std::ifstream status("/proc/self/status");
    std::string word;
    long size = 0;
    while (status >> word) {
        if (word == "VmRSS:") {
            status >> size;
        }
    }
    return size;
}

std::multiset<std::string> threadNames() {
    std::multiset<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        names.insert(name);
    }
    return names;
}

class ConnectionTest : public TransportTest {
protected:
    ConnectionTest() {
        server.routes().Get("/", [](const httplib::Request&, httplib::Response& response) {
            response.set_content("a short answer", "text/plain");
        });
        server.start();
        transport = pinning("localhost", {leaf.certificate()});
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TestServer server{leaf, 80};
    std::shared_ptr<CurlTransport> transport;
};

TEST_F(ConnectionTest, IsUsedAgain) {
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(succeeded(send(*transport, get(server.url("/")))));
    }
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_EQ(server.requests(), 50);
}

TEST_F(ConnectionTest, OneTheServerClosedMeanwhileIsReplaced) {
    RawServer closing([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    });
    for (int i = 0; i < 5; ++i) {
        const auto heard = send(*transport, with(Method::POST, closing.url("/"), "body"));
        ASSERT_TRUE(succeeded(heard));
    }
}

TEST_F(ConnectionTest, SixtyFourAtOnce) {
    std::vector<Observer> observers;
    for (int i = 0; i < 64; ++i) {
        observers.push_back(std::make_shared<RecordingObserver>());
        transport->start(get(server.url("/")), observers.back());
    }
    for (const Observer& observer : observers) {
        ASSERT_TRUE(observer->wait());
        EXPECT_TRUE(succeeded(observer));
        EXPECT_EQ(observer->body, "a short answer");
    }
    EXPECT_EQ(server.requests(), 64);
}

TEST_F(ConnectionTest, FromManyThreads) {
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 25; ++i) {
                good += succeeded(send(*transport, get(server.url("/")))) ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 200);
}

TEST_F(ConnectionTest, ThreadsStartWithTheFirstRequestOfTheirPolicy) {
    EXPECT_EQ(threadNames().count("kelo-net") + threadNames().count("kelo-net-pinned"), 0U);
    send(*transport, get(server.url("/")));
    EXPECT_EQ(threadNames().count("kelo-net-pinned"), 1U);
    EXPECT_EQ(threadNames().count("kelo-net"), 0U);
    send(*transport, get(server.url("/", "127.0.0.1")));
    send(*transport, get("http://127.0.0.1:1/"));
    EXPECT_EQ(threadNames().count("kelo-net"), 1U);
    transport.reset();
    EXPECT_EQ(threadNames().count("kelo-net") + threadNames().count("kelo-net-pinned"), 0U);
}

class DiskObserver : public RecordingObserver {
public:
    bool mayWaitForDisk() const override { return true; }
};

TEST_F(ConnectionTest, AnObserverThatWaitsForADiskHoldsUpNoOther) {
    std::binary_semaphore writing{0};
    std::binary_semaphore written{0};
    const auto slow = std::make_shared<DiskObserver>();
    slow->onData = [&] {
        writing.release();
        return written.try_acquire_for(std::chrono::seconds(20));
    };
    transport->start(get(server.url("/")), slow);
    ASSERT_TRUE(writing.try_acquire_for(std::chrono::seconds(20)));
    EXPECT_EQ(threadNames().count("kelo-disk-pin"), 1U);
    const auto quick = send(*transport, get(server.url("/")));
    EXPECT_TRUE(succeeded(quick));
    EXPECT_FALSE(slow->hasCompleted());
    written.release();
    ASSERT_TRUE(slow->wait());
    EXPECT_TRUE(succeeded(slow));
    EXPECT_NE(slow->thread, quick->thread);
}

TEST_F(ConnectionTest, WhatStartsInsideTheEndOfAnotherIsSentAtOnce) {
    const auto second = std::make_shared<RecordingObserver>();
    const auto first = std::make_shared<RecordingObserver>();
    first->onComplete = [&] { transport->start(get(server.url("/")), second); };
    transport->start(get(server.url("/")), first);
    ASSERT_TRUE(first->wait());
    ASSERT_TRUE(second->wait()) << "the thread went to sleep over it";
    EXPECT_TRUE(succeeded(second));
    EXPECT_EQ(second->thread, first->thread);
}

/// A server that answers /late only when it is let.
class SentRequestTest : public ConnectionTest {
protected:
    SentRequestTest() {
        // The server's thread may be in there longer than a test.
        server.routes().Get(
            "/late", [answer = answer](const httplib::Request&, httplib::Response& response) {
                EXPECT_TRUE(answer->try_acquire_for(std::chrono::seconds(20)));
                response.set_content("late", "text/plain");
            });
        // From here on there is a connection, on which a request goes out at once.
        EXPECT_TRUE(succeeded(send(*transport, get(server.url("/")))));
    }

    std::shared_ptr<std::counting_semaphore<>> answer =
        std::make_shared<std::counting_semaphore<>>(0);
    std::shared_ptr<RecordingObserver> observer = std::make_shared<RecordingObserver>();
};

TEST_F(SentRequestTest, IsToldOfWhileTheAnswerIsAwaited) {
    observer->onRequestSent = [this] { answer->release(); };
    transport->start(get(server.url("/late")), observer);
    ASSERT_TRUE(observer->wait()) << "nobody was told, so nobody let the server answer";
    EXPECT_EQ(observer->body, "late");
    EXPECT_EQ(observer->requestsSent, 1);
    EXPECT_EQ(observer->callsAfterEnd, 0);
}

TEST_F(SentRequestTest, WhereNothingWasSentThereIsNothingToTell) {
    observer = send(*transport, get("https://localhost:1/"));
    EXPECT_TRUE(observer->error);
    EXPECT_EQ(observer->requestsSent, 0);
}

TEST_F(SentRequestTest, MayBeCancelledThere) {
    std::shared_ptr<Exchange> exchange;
    std::binary_semaphore started{0};
    observer->onRequestSent = [&] {
        EXPECT_TRUE(started.try_acquire_for(std::chrono::seconds(20)));
        exchange->cancel();
    };
    exchange = transport->start(get(server.url("/late")), observer);
    started.release();
    ASSERT_TRUE(observer->wait());
    ASSERT_TRUE(observer->error);
    EXPECT_TRUE(isHTTPError(*observer->error, HTTPErrorCode::Cancelled));
    EXPECT_TRUE(observer->responses.empty());
    answer->release();
}

TEST_F(SentRequestTest, MayBeFollowedByAnotherThere) {
    const auto second = std::make_shared<RecordingObserver>();
    second->onComplete = [this] { answer->release(); };
    observer->onRequestSent = [&] { transport->start(get(server.url("/")), second); };
    transport->start(get(server.url("/late")), observer);
    ASSERT_TRUE(observer->wait()) << "the thread slept over what was started there";
    EXPECT_TRUE(succeeded(observer));
    EXPECT_TRUE(succeeded(second));
}

TEST_F(SentRequestTest, MayEndTheTransportThere) {
    std::binary_semaphore started{0};
    observer->onRequestSent = [&] {
        EXPECT_TRUE(started.try_acquire_for(std::chrono::seconds(20)));
        transport.reset();
    };
    transport->start(get(server.url("/late")), observer);
    started.release();
    ASSERT_TRUE(observer->wait());
    EXPECT_TRUE(isHTTPError(observer->error.value(), HTTPErrorCode::Cancelled));
    answer->release();
}

TEST_F(SentRequestTest, NoMemoryThereEndsThatRequestOnly) {
    observer->onRequestSent = [] { throw std::bad_alloc(); };
    transport->start(get(server.url("/late")), observer);
    ASSERT_TRUE(observer->wait());
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::OutOfResources));
    answer->release();
    EXPECT_TRUE(succeeded(send(*transport, get(server.url("/")))));
}

TEST_F(ConnectionTest, NoMemoryWhileTheBodyIsSentEndsThatRequestOnly) {
    const auto observer = std::make_shared<RecordingObserver>();
    observer->onSent = [] { throw std::bad_alloc(); };
    transport->start(with(Method::POST, server.url("/"), "body"), observer);
    ASSERT_TRUE(observer->wait());
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::OutOfResources));
    EXPECT_TRUE(succeeded(send(*transport, get(server.url("/")))));
}

TEST_F(ConnectionTest, NothingRemainsOfATransport) {
    const auto once = [this] {
        const auto brief = pinning("localhost", {leaf.certificate()});
        EXPECT_TRUE(succeeded(send(*brief, get(server.url("/")))));
    };
    once();
    const auto before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        once();
    }
    // The server may still be about to close its ends.
    for (int i = 0; i < 500 && openDescriptors() > before; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_LE(openDescriptors(), before);
}

TEST_F(ConnectionTest, WithoutDescriptorsTheRequestFails) {
    if (isSanitized) {
        GTEST_SKIP() << "UndefinedBehaviorSanitizer checks types through a pipe of its own";
    }
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{0, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const auto heard = send(*transport, get(server.url("/")));
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::OutOfResources));
    EXPECT_NE(heard->thread, std::this_thread::get_id());
    // And the next one works.
    EXPECT_TRUE(succeeded(send(*transport, get(server.url("/")))));
}

TEST_F(ConnectionTest, TenThousandRequestsLeaveNoTrace) {
    constexpr int all = isSanitized ? 1'000 : 10'000;
    constexpr int warmUp = all / 5;
    std::size_t descriptors = 0;
    long memory = 0;
    for (int i = 0; i < all; ++i) {
        if (i == warmUp) {
            descriptors = openDescriptors();
            memory = residentMemory();
        }
        const auto heard = send(*transport, get(server.url("/")));
        ASSERT_TRUE(succeeded(heard)) << "request " << i;
    }
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_LE(openDescriptors(), descriptors);
    const long growth = residentMemory() - memory;
    RecordProperty("growth_kib", static_cast<int>(growth));
    std::printf("memory after %d requests: %ld KiB, grown by %ld KiB since request %d\n", all,
                residentMemory(), growth, warmUp);
    if (!isSanitized) {
        // 100 bytes kept of each would be twice as much.
        EXPECT_LE(growth, 400);
    }
}

} // namespace
} // namespace KeloAPI::testing
