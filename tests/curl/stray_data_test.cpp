#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <linux/sockios.h>
#include <openssl/ssl.h>
#include <sys/ioctl.h>

#include <atomic>
#include <functional>
#include <semaphore>
#include <thread>

namespace KeloAPI::testing {
namespace {

constexpr auto strayLimit = std::chrono::seconds(20);

std::string strayTestResponse(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// Waits until the client's side has everything that was written.
void awaitArrival(int socket) {
    int unacknowledged = 1;
    for (int i = 0; i < 20'000 && unacknowledged > 0; ++i) {
        ASSERT_EQ(::ioctl(socket, SIOCOUTQ, &unacknowledged), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_EQ(unacknowledged, 0);
}

/// A server whose first connection gets one good response, then, in idle time, what the test says;
/// and no second response. All further connections are well served.
class StrayDataTest : public TransportTest {
protected:
    /// Lets the server do it, and waits until the client has it.
    void disturb() {
        disturbing.release();
        ASSERT_TRUE(disturbed.try_acquire_for(strayLimit));
    }

    void serveFirst(RawConnection& connection) {
        connection.readRequest();
        connection.write(strayTestResponse("first"));
        ASSERT_TRUE(disturbing.try_acquire_for(strayLimit));
        connection.write(surplus);
        awaitArrival(connection.socket());
        disturbed.release();
        while (!connection.readRequest().empty()) {
            ++requestsAfterwards;
        }
    }

    void serveWell(RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            beforeResponse();
            connection.write(strayTestResponse("good"));
        }
    }

    std::string surplus;
    std::function<void()> beforeResponse = [] {};
    std::atomic<int> requestsAfterwards = 0;
    std::binary_semaphore disturbing{0};
    std::binary_semaphore disturbed{0};
    std::atomic<int> accepted = 0;
    RawServer server{[this](RawConnection& connection) {
        if (accepted++ == 0) {
            serveFirst(connection);
        } else {
            serveWell(connection);
        }
    }};
    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(StrayDataTest, IsNotTheResponseToTheNextRequest) {
    surplus = strayTestResponse("a response to nothing");
    EXPECT_EQ(send(*transport, get(server.url("/")))->body, "first");
    disturb();
    const auto second = send(*transport, with(Method::POST, server.url("/"), "once"));
    EXPECT_TRUE(succeeded(second));
    EXPECT_EQ(second->body, "good");
    EXPECT_EQ(send(*transport, get(server.url("/")))->body, "good");
    EXPECT_EQ(server.connections(), 2);
    EXPECT_EQ(requestsAfterwards, 0) << "nothing is sent there any more";
}

TEST_F(StrayDataTest, WhatGoesOutOnAnotherConnectionIsToldOf) {
    surplus = strayTestResponse("a response to nothing");
    EXPECT_EQ(send(*transport, get(server.url("/")))->body, "first");
    std::binary_semaphore told{0};
    beforeResponse = [&] { EXPECT_TRUE(told.try_acquire_for(std::chrono::seconds(10))); };
    disturb();
    const auto second = std::make_shared<RecordingObserver>();
    second->onRequestSent = [&] { told.release(); };
    transport->start(get(server.url("/")), second);
    ASSERT_TRUE(second->wait());
    EXPECT_TRUE(succeeded(second));
    EXPECT_EQ(second->requestsSent, 1);
}

TEST_F(StrayDataTest, ATimeOutOfAnIdleConnectionIsNoResponse) {
    surplus = "HTTP/1.1 408 Request Timeout\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    EXPECT_EQ(send(*transport, get(server.url("/")))->body, "first");
    disturb();
    const auto second = send(*transport, get(server.url("/")));
    EXPECT_TRUE(succeeded(second));
    EXPECT_EQ(second->body, "good");
}

TEST_F(StrayDataTest, WhereNoneWaitsTheConnectionIsUsedAgain) {
    surplus = "";
    accepted = 1;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(send(*transport, get(server.url("/")))->body, "good");
    }
    EXPECT_EQ(server.connections(), 1);
}

/// The same over TLS, where what waits may be TLS's own.
class StraySecureDataTest : public TransportTest {
protected:
    using Session = std::unique_ptr<SSL, decltype(&SSL_free)>;

    StraySecureDataTest() {
        SSL_CTX_use_certificate(context.get(), leaf.x509());
        SSL_CTX_use_PrivateKey(context.get(), leaf.key());
        transport = pinning("127.0.0.1", {leaf.certificate()});
    }

    static void write(SSL* session, const std::string& text) {
        EXPECT_EQ(SSL_write(session, text.data(), static_cast<int>(text.size())),
                  static_cast<int>(text.size()));
    }

    /// Answers requests, each of which fits in a record, and disturbs after the first.
    void serve(RawConnection& connection) {
        const bool isFirst = accepted++ == 0;
        const Session session(SSL_new(context.get()), &SSL_free);
        SSL_set_fd(session.get(), connection.socket());
        if (SSL_accept(session.get()) != 1) {
            return;
        }
        std::string request(4096, '\0');
        for (int i = 0; SSL_read(session.get(), request.data(), 4096) > 0; ++i) {
            write(session.get(),
                  strayTestResponse(std::to_string(accepted) + "." + std::to_string(i)));
            if (isFirst && i == 0) {
                ASSERT_TRUE(disturbing.try_acquire_for(strayLimit));
                disturbance(session.get());
                awaitArrival(connection.socket());
                disturbed.release();
            }
        }
    }

    /// The bodies of two responses, with the disturbance between them.
    std::string bodies() {
        const auto first = send(*transport, get(server.url("/", "https")));
        disturbing.release();
        EXPECT_TRUE(disturbed.try_acquire_for(strayLimit));
        const auto second = send(*transport, get(server.url("/", "https")));
        EXPECT_TRUE(succeeded(second));
        return first->body + " " + second->body;
    }

    static void sendTicket(SSL* session) {
        EXPECT_EQ(SSL_new_session_ticket(session), 1);
        EXPECT_EQ(SSL_do_handshake(session), 1);
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context{SSL_CTX_new(TLS_server_method()),
                                                              &SSL_CTX_free};
    std::function<void(SSL*)> disturbance;
    std::binary_semaphore disturbing{0};
    std::binary_semaphore disturbed{0};
    std::atomic<int> accepted = 0;
    RawServer server{[this](RawConnection& connection) { serve(connection); }};
    std::shared_ptr<CurlTransport> transport;
};

TEST_F(StraySecureDataTest, IsNotTheResponseToTheNextRequest) {
    disturbance = [](SSL* session) { write(session, strayTestResponse("stray")); };
    EXPECT_EQ(bodies(), "1.0 2.0");
}

TEST_F(StraySecureDataTest, NorBehindATicket) {
    disturbance = [](SSL* session) {
        sendTicket(session);
        write(session, strayTestResponse("stray"));
    };
    EXPECT_EQ(bodies(), "1.0 2.0");
}

TEST_F(StraySecureDataTest, ATicketAloneIsNone) {
    disturbance = &sendTicket;
    EXPECT_EQ(bodies(), "1.0 1.1");
}

TEST_F(StraySecureDataTest, NorAreNewKeys) {
    disturbance = [](SSL* session) {
        EXPECT_EQ(SSL_key_update(session, SSL_KEY_UPDATE_REQUESTED), 1);
        EXPECT_EQ(SSL_do_handshake(session), 1);
    };
    EXPECT_EQ(bodies(), "1.0 1.1");
}

} // namespace
} // namespace KeloAPI::testing
