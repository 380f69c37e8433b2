#include "support/Gzip.hpp"
#include "support/OwnProcess.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/base/internal/System.hpp>

#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <new>
#include <semaphore>

namespace KeloAPI::testing {
namespace {

class ConnectionTest : public TransportTest {
protected:
    TestCertificate leaf = TestCertificate::selfSigned({});
    const std::string packed = packedResponse(gzip("packed"));
    RawServer server{leaf.serverContext(), [this](RawConnection& connection) {
                         connection.serve([this](const std::string& request) {
                             const std::string path = pathOf(request);
                             return path == "/packed" ? packed : okResponse(path);
                         });
                     }};
    std::shared_ptr<CurlTransport> transport = pinning("localhost", {leaf.certificate()});
};

TEST_F(ConnectionTest, OneTheServerClosedMeanwhileIsReplaced) {
    RawServer closing(answeringOnce(okResponse()));
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(succeeded(send(*transport, with(Method::PUT, closing.url("/"), "body"))));
    }
}

TEST_F(ConnectionTest, WhatWasReadOnALostOneIsSentAgainOnlyWhereThatDoesNoHarm) {
    for (const auto& [method, isSentAgain] :
         {std::pair{Method::POST, false}, {Method::PATCH, false}, {Method::PUT, true}}) {
        std::atomic<bool> loses = true;
        RawServer losing([&loses](RawConnection& connection) {
            connection.readRequest();
            connection.write(okResponse());
            // The second request on the first connection is read, and nothing comes back.
            if (!connection.readRequest().empty() && !loses.exchange(false)) {
                connection.write(okResponse());
            }
        });
        const auto request = with(method, losing.url("/"), "body");
        ASSERT_TRUE(succeeded(send(*transport, request)));
        const auto second = send(*transport, request);
        EXPECT_EQ(losing.requests(), isSentAgain ? 3 : 2);
        if (isSentAgain) {
            EXPECT_TRUE(succeeded(second));
        } else {
            EXPECT_TRUE(failedWith(second, HTTPErrorCode::ConnectionLost));
        }
    }
}

TEST_F(ConnectionTest, TheThreadStartsWithTheFirstRequest) {
    if (!System::canNameThreads()) {
        GTEST_SKIP() << "without names the library's threads cannot be told from others";
    }
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
    EXPECT_EQ(threadNames().count("kelo-downloads"), System::canNameThreads() ? 1U : 0U);
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
            memory = memoryInKiB("VmRSS");
        }
        const std::string path = i % 2 == 0 ? "/" : "/packed";
        ASSERT_TRUE(succeeded(send(*transport, get(server.secureUrl(path))))) << "request " << i;
    }
    EXPECT_EQ(server.connections(), 1);
    EXPECT_LE(openDescriptors(), descriptors);
    const long growth = memoryInKiB("VmRSS") - memory;
    RecordProperty("growth_kib", static_cast<int>(growth));
    std::printf("memory after %d requests: %ld KiB, grown by %ld KiB since request %d\n", all,
                memoryInKiB("VmRSS"), growth, warmUp);
    if (!isSanitized) {
        // 100 bytes kept of each would be twice as much.
        EXPECT_LE(growth, 400);
    }
}

/// Bytes that a server sends in idle time are not the response to the next request.
class StrayDataTest : public TransportTest {
protected:
    using Disturb = std::function<void(RawConnection&)>;

    /// Answers with the number of the connection and of the request on it, and disturbs after the
    /// very first response.
    void serve(RawConnection& raw, const Disturb& disturb) {
        const int connection = ++accepted;
        for (int i = 0; !raw.readRequest().empty(); ++i) {
            const int number = ++requests;
            const std::string response = std::to_string(connection) + "." + std::to_string(i);
            {
                const std::lock_guard lock(mutex);
                served += response + " ";
            }
            raw.write(okResponse(response));
            if (number == 1) {
                EXPECT_TRUE(disturbing.try_acquire_for(timeLimit));
                disturb(raw);
                EXPECT_TRUE(eventually([&] { return hasArrived(raw); }));
                disturbed.release();
            }
        }
    }

    /// Whether the client's side has everything that was written.
    static bool hasArrived(const RawConnection& connection) {
        int unacknowledged = 1;
        return ::ioctl(connection.socket(), SIOCOUTQ, &unacknowledged) == 0 && unacknowledged == 0;
    }

    /// What the server has served when three requests have had their responses, with the
    /// disturbance behind the first.
    std::string servedAround(const Disturb& disturb, const std::shared_ptr<SSL_CTX>& tls = {}) {
        accepted = 0;
        requests = 0;
        served.clear();
        const auto transport = pinning("127.0.0.1", {leaf.certificate()});
        auto server = std::make_unique<RawServer>(
            tls, [&](RawConnection& connection) { serve(connection, disturb); });
        const std::string url = server->url("/", tls ? "https" : "http");
        const auto request = get(url);
        std::string bodies = send(*transport, request)->body + " ";
        disturbing.release();
        EXPECT_TRUE(disturbed.try_acquire_for(timeLimit));
        const auto second = send(*transport, with(Method::POST, url, "once"));
        expectAllSucceeded({second});
        bodies += second->body + " " + send(*transport, request)->body + " ";
        server.reset();
        EXPECT_EQ(bodies, served) << "nothing more was sent anywhere";
        return served;
    }

    std::atomic<int> accepted = 0;
    std::atomic<int> requests = 0;
    std::mutex mutex;
    std::string served;
    std::binary_semaphore disturbing{0};
    std::binary_semaphore disturbed{0};
    TestCertificate leaf = TestCertificate::selfSigned({});
    std::shared_ptr<SSL_CTX> context = leaf.serverContext();
};

constexpr const char* otherConnection = "1.0 2.0 2.1 ";
constexpr const char* sameConnection = "1.0 1.1 1.2 ";

TEST_F(StrayDataTest, WithoutTLS) {
    const auto servedAfter = [this](const std::string& stray) {
        return servedAround([&](RawConnection& connection) { connection.write(stray); });
    };
    EXPECT_EQ(servedAfter(okResponse("a response to nothing")), otherConnection);
    EXPECT_EQ(servedAfter("HTTP/1.1 408 Request Timeout\r\nContent-Length: 0\r\n"
                          "Connection: close\r\n\r\n"),
              otherConnection);
    EXPECT_EQ(servedAfter(""), sameConnection);
}

/// What waits may be TLS's own.
TEST_F(StrayDataTest, WithTLS) {
    const auto stray = [](RawConnection& connection) { connection.write(okResponse("stray")); };
    const auto ticket = [](RawConnection& connection) {
        EXPECT_EQ(SSL_new_session_ticket(connection.session()), 1);
        EXPECT_EQ(SSL_do_handshake(connection.session()), 1);
    };
    const auto newKeys = [](RawConnection& connection) {
        EXPECT_EQ(SSL_key_update(connection.session(), SSL_KEY_UPDATE_REQUESTED), 1);
        EXPECT_EQ(SSL_do_handshake(connection.session()), 1);
    };
    const auto ticketAndStray = [&](RawConnection& connection) {
        ticket(connection);
        stray(connection);
    };
    EXPECT_EQ(servedAround(stray, context), otherConnection);
    EXPECT_EQ(servedAround(ticketAndStray, context), otherConnection);
    EXPECT_EQ(servedAround(ticket, context), sameConnection);
    EXPECT_EQ(servedAround(newKeys, context), sameConnection);
}

} // namespace
} // namespace KeloAPI::testing
