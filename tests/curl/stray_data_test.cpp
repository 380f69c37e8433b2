#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <semaphore>

namespace KeloAPI::testing {
namespace {

/// Bytes that a server sends in idle time are not the response to the next request.
class StrayDataTest : public TransportTest {
protected:
    using Disturb = std::function<void()>;

    /// Answers with the number of the connection and of the request on it, and disturbs after the
    /// very first response.
    template <class ReadRequest, class Write>
    void serve(const RawConnection& raw, const ReadRequest& readRequest, const Write& write,
               const Disturb& disturb) {
        const int connection = ++accepted;
        for (int i = 0; readRequest(); ++i) {
            const int number = ++requests;
            if (number == 2) {
                EXPECT_TRUE(told.try_acquire_for(timeLimit)) << "nobody heard that it was sent";
            }
            const std::string response = std::to_string(connection) + "." + std::to_string(i);
            {
                const std::lock_guard lock(mutex);
                served += response + " ";
            }
            write(okResponse(response));
            if (number == 1) {
                EXPECT_TRUE(disturbing.try_acquire_for(timeLimit));
                disturb();
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
    std::string servedBy(const RawServer::Handler& handler, const std::string& scheme) {
        accepted = 0;
        requests = 0;
        served.clear();
        const auto transport = pinning("127.0.0.1", {leaf.certificate()});
        auto server = std::make_unique<RawServer>(handler);
        const auto request = get(server->url("/", scheme));
        std::string bodies = send(*transport, request)->body + " ";
        disturbing.release();
        EXPECT_TRUE(disturbed.try_acquire_for(timeLimit));
        const auto second = std::make_shared<RecordingObserver>();
        second->onRequestSent = [this] { told.release(); };
        transport->start(scheme == "http" ? with(Method::POST, server->url("/"), "once") : request,
                         second);
        expectAllSucceeded({second});
        EXPECT_EQ(second->requestsSent, 1);
        bodies += second->body + " " + send(*transport, request)->body + " ";
        server.reset();
        EXPECT_EQ(bodies, served) << "nothing more was sent anywhere";
        return served;
    }

    std::atomic<int> accepted = 0;
    std::atomic<int> requests = 0;
    std::mutex mutex;
    std::string served;
    std::counting_semaphore<> told{0};
    std::binary_semaphore disturbing{0};
    std::binary_semaphore disturbed{0};
    TestCertificate leaf = TestCertificate::selfSigned({});
    std::shared_ptr<SSL_CTX> context = leaf.serverContext();
};

constexpr const char* otherConnection = "1.0 2.0 2.1 ";
constexpr const char* sameConnection = "1.0 1.1 1.2 ";

TEST_F(StrayDataTest, WithoutTLS) {
    const auto servedAfter = [this](const std::string& stray) {
        const auto handler = [&](RawConnection& connection) {
            serve(
                connection, [&] { return !connection.readRequest().empty(); },
                [&](const std::string& text) { connection.write(text); },
                [&] { connection.write(stray); });
        };
        return servedBy(handler, "http");
    };
    EXPECT_EQ(servedAfter(okResponse("a response to nothing")), otherConnection);
    EXPECT_EQ(servedAfter("HTTP/1.1 408 Request Timeout\r\nContent-Length: 0\r\n"
                          "Connection: close\r\n\r\n"),
              otherConnection);
    EXPECT_EQ(servedAfter(""), sameConnection);
}

/// What waits may be TLS's own.
TEST_F(StrayDataTest, WithTLS) {
    const auto write = [](SSL* session, const std::string& text) {
        const int size = static_cast<int>(text.size());
        EXPECT_EQ(SSL_write(session, text.data(), size), size);
    };
    const auto servedAfter = [&](const std::function<void(SSL*)>& disturb) {
        const auto handler = [&](RawConnection& connection) {
            const std::unique_ptr<SSL, decltype(&SSL_free)> session(SSL_new(context.get()),
                                                                    &SSL_free);
            SSL_set_fd(session.get(), connection.socket());
            SSL_accept(session.get());
            std::string request(4096, '\0'); // fits in a record
            serve(
                connection, [&] { return SSL_read(session.get(), request.data(), 4096) > 0; },
                [&](const std::string& text) { write(session.get(), text); },
                [&] { disturb(session.get()); });
        };
        return servedBy(handler, "https");
    };
    const auto stray = [&](SSL* session) { write(session, okResponse("stray")); };
    const auto ticket = [](SSL* session) {
        EXPECT_EQ(SSL_new_session_ticket(session), 1);
        EXPECT_EQ(SSL_do_handshake(session), 1);
    };
    const auto newKeys = [](SSL* session) {
        EXPECT_EQ(SSL_key_update(session, SSL_KEY_UPDATE_REQUESTED), 1);
        EXPECT_EQ(SSL_do_handshake(session), 1);
    };
    EXPECT_EQ(servedAfter(stray), otherConnection);
    EXPECT_EQ(servedAfter([&](SSL* session) {
                  ticket(session);
                  stray(session);
              }),
              otherConnection);
    EXPECT_EQ(servedAfter(ticket), sameConnection);
    EXPECT_EQ(servedAfter(newKeys), sameConnection);
}

} // namespace
} // namespace KeloAPI::testing
