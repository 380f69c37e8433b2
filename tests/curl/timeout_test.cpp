#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <future>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class TimeoutTest : public TransportTest {
protected:
    struct Timed {
        Observer observer;
        std::chrono::milliseconds took;
    };

    Timed timed(URLRequest request, std::chrono::milliseconds interval = 300ms) {
        request.timeoutInterval = interval;
        const auto begin = Clock::now();
        auto heard = send(*transport, request);
        return {heard, std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin)};
    }

    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(TimeoutTest, WhenNoAnswerComes) {
    RawServer silent([](RawConnection& connection) { connection.waitForClose(); });
    const Timed heard = timed(get(silent.url("/")));
    EXPECT_TRUE(failedWith(heard.observer, HTTPErrorCode::TimedOut));
    EXPECT_GE(heard.took, 300ms);
    EXPECT_LT(heard.took, 10s);
}

TEST_F(TimeoutTest, WhenTheBodyStalls) {
    RawServer stalling([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nsome");
        connection.waitForClose();
    });
    const Timed heard = timed(get(stalling.url("/")));
    EXPECT_TRUE(failedWith(heard.observer, HTTPErrorCode::TimedOut));
    EXPECT_EQ(heard.observer->body, "some");
}

TEST_F(TimeoutTest, WhenTheConnectionDoesNotComeAbout) {
    RawServer silent([](RawConnection& connection) { connection.waitForClose(); });
    EXPECT_TRUE(failedWith(timed(get(silent.url("/", "https"))).observer, HTTPErrorCode::TimedOut));
}

TEST_F(TimeoutTest, WhenTheRequestsBodyIsNotTaken) {
    std::promise<void> hasEnded;
    RawServer deaf([&](RawConnection&) { hasEnded.get_future().wait_for(10s); });
    const Timed heard = timed(with(Method::POST, deaf.url("/"), largeBody()));
    hasEnded.set_value();
    EXPECT_TRUE(failedWith(heard.observer, HTTPErrorCode::TimedOut));
    EXPECT_LT(heard.took, 9s);
}

TEST_F(TimeoutTest, NotWhileBytesArrive) {
    RawServer slow([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n");
        for (int i = 0; i < 10; ++i) {
            std::this_thread::sleep_for(150ms);
            connection.write("x");
        }
    });
    const Timed heard = timed(get(slow.url("/")), 1s);
    EXPECT_TRUE(succeeded(heard.observer));
    EXPECT_GE(heard.took, 1500ms);
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
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        connection.waitForClose();
    });
    const Timed heard = timed(with(Method::POST, sipping.url("/"), body), 3s);
    EXPECT_TRUE(succeeded(heard.observer));
    EXPECT_GE(heard.took, 4s);
}

TEST_F(TimeoutTest, OneAmongOthersLeavesThemAlone) {
    RawServer mixed([](RawConnection& connection) {
        const bool stall = connection.readRequest().starts_with("GET /stall");
        if (!stall) {
            std::this_thread::sleep_for(700ms);
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        }
        connection.waitForClose();
    });
    auto patient = std::make_shared<RecordingObserver>();
    auto request = get(mixed.url("/patient"));
    request.timeoutInterval = std::chrono::milliseconds::max();
    transport->start(request, patient);
    EXPECT_TRUE(failedWith(timed(get(mixed.url("/stall"))).observer, HTTPErrorCode::TimedOut));
    ASSERT_TRUE(patient->wait());
    EXPECT_TRUE(succeeded(patient));
}

} // namespace
} // namespace KeloAPI::testing
