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
