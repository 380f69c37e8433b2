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
    RawServer server{leaf.serverContext(), [](RawConnection& connection) {
                         connection.serve([](const std::string& request) {
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

TEST_F(ConnectionTest, TheThreadStartsWithTheFirstRequest) {
    EXPECT_EQ(threadNames().count("kelo-calls"), 0U);
    send(*transport, get(server.secureUrl("/")));
    send(*transport, get(server.secureUrl("/", "127.0.0.1")));
    EXPECT_EQ(threadNames().count("kelo-calls"), 1U);
    EXPECT_EQ(threadNames().count("kelo-downloads"), 0U);
    transport.reset();
    EXPECT_EQ(threadNames().count("kelo-calls"), 0U);
}

TEST_F(ConnectionTest, ADownloadThatWaitsForADiskHoldsUpNoCall) {
    std::binary_semaphore writing{0};
    std::binary_semaphore written{0};
    const auto slow = std::make_shared<RecordingObserver>();
    slow->onData = [&] {
        writing.release();
        return written.try_acquire_for(timeLimit);
    };
    transport->start(get(server.secureUrl("/")), slow, TransferKind::Download);
    ASSERT_TRUE(writing.try_acquire_for(timeLimit));
    EXPECT_EQ(threadNames().count("kelo-downloads"), 1U);
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

TEST_F(ConnectionTest, NoMemoryInACallbackEndsThatRequestOnly) {
    for (const bool whileSending : {true, false}) {
        const auto observer = std::make_shared<RecordingObserver>();
        (whileSending ? observer->onSent : observer->onResponse) = [] { throw std::bad_alloc(); };
        send(*transport, with(Method::POST, server.secureUrl("/"), "body"), observer);
        EXPECT_TRUE(failedWith(observer, HTTPErrorCode::OutOfResources));
        EXPECT_TRUE(succeeded(send(*transport, get(server.secureUrl("/")))));
    }
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
