#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "TransportTest.hpp"

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
    TestCertificate leaf = TestCertificate::selfSigned({});
    /// /late is answered only when it is let.
    std::counting_semaphore<> answer{0};
    RawServer server{leaf.serverContext(), [this](RawConnection& connection) {
                         connection.serve([this](const std::string& request) {
                             EXPECT_TRUE(pathOf(request) != "/late" ||
                                         answer.try_acquire_for(timeLimit));
                             return okResponse(pathOf(request));
                         });
                     }};
    std::shared_ptr<CurlTransport> transport = pinning("localhost", {leaf.certificate()});
};

TEST_F(ConnectionTest, OneTheServerClosedMeanwhileIsReplaced) {
    RawServer closing(answeringOnce(okResponse()));
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(succeeded(send(*transport, with(Method::POST, closing.url("/"), "body"))));
    }
}

TEST_F(ConnectionTest, ThreadsStartWithTheFirstRequestOfTheirPolicy) {
    EXPECT_EQ(threadNames().count("kelo-net") + threadNames().count("kelo-net-pinned"), 0U);
    send(*transport, get(server.secureUrl("/")));
    EXPECT_EQ(threadNames().count("kelo-net-pinned"), 1U);
    EXPECT_EQ(threadNames().count("kelo-net"), 0U);
    send(*transport, get(server.secureUrl("/", "127.0.0.1")));
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
        return written.try_acquire_for(timeLimit);
    };
    transport->start(get(server.secureUrl("/")), slow);
    ASSERT_TRUE(writing.try_acquire_for(timeLimit));
    EXPECT_EQ(threadNames().count("kelo-disk-pin"), 1U);
    const auto quick = send(*transport, get(server.secureUrl("/")));
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
    first->onComplete = [&] { transport->start(get(server.secureUrl("/")), second); };
    transport->start(get(server.secureUrl("/")), first);
    ASSERT_TRUE(first->wait());
    ASSERT_TRUE(second->wait()) << "the thread went to sleep over it";
    EXPECT_TRUE(succeeded(second));
    EXPECT_EQ(second->thread, first->thread);
}

/// With a connection on which a request goes out at once.
class SentRequestTest : public ConnectionTest {
protected:
    SentRequestTest() { EXPECT_TRUE(succeeded(send(*transport, get(server.secureUrl("/"))))); }

    /// Starts a request and does this as it is told that the request was sent.
    void startLate(const std::function<void(Exchange&)>& whenSent) {
        std::shared_ptr<Exchange> exchange;
        std::binary_semaphore started{0};
        observer->onRequestSent = [&] {
            EXPECT_TRUE(started.try_acquire_for(timeLimit));
            whenSent(*exchange);
        };
        exchange = transport->start(get(server.secureUrl("/late")), observer);
        started.release();
        ASSERT_TRUE(observer->wait()) << "nobody was told, or the thread slept over it";
        answer.release();
    }

    Observer observer = std::make_shared<RecordingObserver>();
};

TEST_F(SentRequestTest, IsToldOfWhileTheResponseIsAwaited) {
    startLate([this](Exchange&) { answer.release(); });
    EXPECT_EQ(observer->body, "/late");
    EXPECT_EQ(observer->requestsSent, 1);
    EXPECT_EQ(observer->callsAfterEnd, 0);
    // Where nothing was sent there is nothing to tell.
    const auto unsent = send(*transport, get("https://localhost:1/"));
    EXPECT_TRUE(unsent->error);
    EXPECT_EQ(unsent->requestsSent, 0);
}

TEST_F(SentRequestTest, MayBeCancelledThere) {
    startLate([](Exchange& exchange) { exchange.cancel(); });
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Cancelled));
    EXPECT_TRUE(observer->responses.empty());
}

TEST_F(SentRequestTest, MayEndTheTransportThere) {
    startLate([this](Exchange&) { transport.reset(); });
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::Cancelled));
}

TEST_F(SentRequestTest, MayBeFollowedByAnotherThere) {
    const auto second = std::make_shared<RecordingObserver>();
    second->onComplete = [this] { answer.release(); };
    startLate([&](Exchange&) { transport->start(get(server.secureUrl("/")), second); });
    expectAllSucceeded({observer, second});
}

TEST_F(SentRequestTest, NoMemoryInACallbackEndsThatRequestOnly) {
    startLate([](Exchange&) { throw std::bad_alloc(); });
    EXPECT_TRUE(failedWith(observer, HTTPErrorCode::OutOfResources));
    const auto second = std::make_shared<RecordingObserver>();
    second->onSent = [] { throw std::bad_alloc(); };
    transport->start(with(Method::POST, server.secureUrl("/"), "body"), second);
    ASSERT_TRUE(second->wait());
    EXPECT_TRUE(failedWith(second, HTTPErrorCode::OutOfResources));
    EXPECT_TRUE(succeeded(send(*transport, get(server.secureUrl("/")))));
}

TEST_F(ConnectionTest, NothingRemainsOfATransport) {
    const auto once = [this] {
        const auto brief = pinning("localhost", {leaf.certificate()});
        EXPECT_TRUE(succeeded(send(*brief, get(server.secureUrl("/")))));
    };
    once();
    const auto before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        once();
    }
    EXPECT_TRUE(eventually([&] { return openDescriptors() <= before; }))
        << "the server, too, has closed its ends by now";
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
        ASSERT_TRUE(succeeded(send(*transport, get(server.secureUrl("/"))))) << "request " << i;
    }
    EXPECT_EQ(server.connections(), 1);
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
