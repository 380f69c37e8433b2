#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <semaphore>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class TimeoutTest : public TransportTest {
protected:
    /// What the request comes to; `took` is how long that takes.
    Observer timed(URLRequest request, std::chrono::milliseconds interval = 300ms) {
        request.timeoutInterval = interval;
        const auto begin = Clock::now();
        auto heard = send(*transport, request);
        took = Clock::now() - begin;
        return heard;
    }

    void expectTimedOut(const URLRequest& request) {
        EXPECT_TRUE(failedWith(timed(request), HTTPErrorCode::TimedOut)) << request.description();
        EXPECT_GE(took, 300ms);
    }

    Clock::duration took{};
    RawServer silent{keepingSilent()};
    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(TimeoutTest, WhenNoResponseOrNoConnectionComesOrTheBodyIsNotTaken) {
    const RawServer deaf(keepingDeaf());
    expectTimedOut(get(silent.url("/")));
    expectTimedOut(get(silent.url("/", "https")));
    expectTimedOut(with(Method::POST, deaf.url("/"), largeBody()));
}

TEST_F(TimeoutTest, WhenTheBodyStalls) {
    RawServer stalling([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nsome");
        connection.waitForClose();
    });
    const auto heard = timed(get(stalling.url("/")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::TimedOut));
    EXPECT_EQ(heard->body, "some");
}

TEST_F(TimeoutTest, NotWhileBytesLeave) {
    // The body is long since read into buffers while the network still takes it: in sips for longer
    // than the time-out, then as it comes.
    const std::string body = largeBody();
    RawServer sipping([&body](RawConnection& connection) {
        const auto begin = Clock::now();
        for (std::size_t taken = 0; taken < body.size();) {
            const std::size_t sip = connection.read(400'000).size();
            if (sip == 0) {
                return;
            }
            taken += sip;
            if (Clock::now() - begin < 4s) {
                std::this_thread::sleep_for(50ms);
            }
        }
        connection.write(okResponse());
        connection.waitForClose();
    });
    EXPECT_TRUE(succeeded(timed(with(Method::POST, sipping.url("/"), body), 3s)));
    EXPECT_GE(took, 4s);
}

TEST_F(TimeoutTest, OneAmongOthersLeavesThemAlone) {
    std::binary_semaphore hasTimedOut{0};
    RawServer mixed([&](RawConnection& connection) {
        if (pathOf(connection.readRequest()) != "/stall") {
            EXPECT_TRUE(hasTimedOut.try_acquire_for(timeLimit));
            connection.write(okResponse());
        }
        connection.waitForClose();
    });
    auto request = get(mixed.url("/patient"));
    request.timeoutInterval = std::chrono::milliseconds::max();
    const auto patient = start(*transport, request);
    expectTimedOut(get(mixed.url("/stall")));
    hasTimedOut.release();
    expectAllSucceeded({patient});
}

} // namespace
} // namespace KeloAPI::testing
