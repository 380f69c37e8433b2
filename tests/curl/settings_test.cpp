#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/Retry.hpp>
#include <KeloAPI/http/internal/MemorySink.hpp>

#include <atomic>
#include <mutex>
#include <semaphore>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string responseOf(const std::string& statusLine, const std::string& fields,
                       const std::string& body) {
    return "HTTP/1.1 " + statusLine + "\r\n" + fields +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

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
    const RawServer stalling(
        answeringAndWaiting("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nsome"));
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

class SettingsTest : public TransportTest {
protected:
    Observer sendWith(const TransportSettings& settings, const URLRequest& request) {
        transport = unpinned(settings);
        return send(*transport, request);
    }

    std::shared_ptr<CurlTransport> transport;
};

TEST_F(SettingsTest, ConnectingAndSilenceMayTakeNoLongerThanTheShorterLimit) {
    const RawServer silent(keepingSilent());
    const auto expectTimeout = [&](const TransportSettings& settings, const URLRequest& request) {
        EXPECT_TRUE(failedWith(sendWith(settings, request), HTTPErrorCode::TimedOut));
    };
    URLRequest secure = get(silent.url("/", "https"));
    secure.timeoutInterval = 1h;
    expectTimeout({.connectTimeout = 200ms}, secure);
    URLRequest request = get(silent.url("/"));
    request.timeoutInterval = 1h;
    expectTimeout({.silenceTimeout = 200ms}, request);
    request.timeoutInterval = 200ms;
    expectTimeout({.silenceTimeout = 1h}, request);
}

TEST_F(SettingsTest, AResponseThatNeverEndsIsGivenUp) {
    RawServer dribbling([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        while (connection.write(".")) {
            std::this_thread::sleep_for(10ms); // never silent for long
        }
    });
    const auto heard = sendWith({.responseTimeout = 300ms}, get(dribbling.url("/")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::TimedOut));
    EXPECT_FALSE(heard->body.empty());
}

TEST_F(SettingsTest, AHeadHasALimit) {
    const RawServer server(
        answeringOnce(responseOf("200 OK", "X-Long: " + std::string(2000, 'x') + "\r\n", "ok")));
    EXPECT_TRUE(failedWith(sendWith({.maxHeadBytes = 1000}, get(server.url("/"))),
                           HTTPErrorCode::BadServerResponse));
    EXPECT_TRUE(succeeded(sendWith({.maxHeadBytes = 3000}, get(server.url("/")))));
}

TEST(MemorySinkTest, ABodyHasALimit) {
    MemorySink sink(10, 1000);
    EXPECT_TRUE(sink.take("0123456789"));
    EXPECT_FALSE(sink.take("x"));
    EXPECT_TRUE(isHTTPError(sink.finish({}).value(), HTTPErrorCode::BodyTooLarge));
}

/// A server that fails so many times before it answers "ok".
class RetryTest : public SettingsTest {
protected:
    static RetrySettings retrying(int retries, std::chrono::milliseconds firstPause = 20ms,
                                  std::chrono::milliseconds maxPause = 1h) {
        return {.maxRetries = retries, .firstPause = firstPause, .maxPause = maxPause};
    }

    void serve(RawConnection& connection) {
        for (std::string request = connection.readRequest(); !request.empty();
             request = connection.readRequest()) {
            const std::string failed = failure();
            if (++requests > failures) {
                connection.write(okResponse());
            } else if (failed.empty()) {
                return; // the connection closes without a response
            } else {
                connection.write(failed);
            }
        }
    }

    std::string failure() {
        const std::lock_guard lock(mutex);
        return failureText;
    }
    void setFailure(std::string failure) {
        const std::lock_guard lock(mutex);
        failureText = std::move(failure);
    }

    std::mutex mutex;
    std::string failureText = responseOf("503 Busy", "", "busy");
    std::atomic<int> failures = 2;
    std::atomic<int> requests = 0;
    RawServer server{[this](RawConnection& connection) { serve(connection); }};
};

TEST_F(RetryTest, GoesOnUntilAResponseIsThere) {
    const auto begin = Clock::now();
    const auto heard = sendWith({.retries = retrying(2)}, get(server.url("/")));
    EXPECT_TRUE(succeeded(heard)) << "the head and the end are told once";
    EXPECT_EQ(heard->body, "ok");
    EXPECT_EQ(requests, 3);
    EXPECT_GE(Clock::now() - begin, 30ms) << "at least half of 20 ms and of 40 ms";
}

TEST_F(RetryTest, RepeatsWhatMayBeRepeatedInTime) {
    const std::string busy = failure();
    const struct {
        const char* what;
        TransportSettings settings;
        std::string failure;
        int status;
        int requests;
        Method method = Method::PUT;
    } table[] = {
        {"off unless it is asked for", {}, busy, 503, 1},
        {"with its body", {.retries = retrying(2)}, busy, 200, 3},
        {"to the last response", {.retries = retrying(1)}, busy, 503, 2},
        {"a lost connection", {.retries = retrying(2)}, "", 200, 3},
        {"no action", {.retries = retrying(2)}, busy, 503, 1, Method::POST},
        {"no other failure", {.retries = retrying(2)}, responseOf("500 No", "", ""), 500, 1},
        {"not what comes too late",
         {.responseTimeout = 3s, .retries = retrying(2, 10s)},
         busy,
         503,
         1},
        {"as soon as the server says",
         {.retries = retrying(2, 1h)},
         responseOf("429 Slow Down", "Retry-After: 0\r\n", ""),
         200,
         3},
        {"not after more than the longest pause",
         {.retries = retrying(2, 1h)},
         responseOf("429 Slow Down", "Retry-After: 7200\r\n", ""),
         429,
         1}};
    for (const auto& one : table) {
        SCOPED_TRACE(one.what);
        requests = 0;
        setFailure(one.failure);
        const auto heard = sendWith(one.settings, with(one.method, server.url("/"), "bytes"));
        EXPECT_TRUE(succeeded(heard, one.status));
        EXPECT_EQ(heard->body, one.status == 200 ? "ok" : one.status == 503 ? "busy" : "");
        EXPECT_EQ(requests, one.requests);
        EXPECT_TRUE(server.received().back().ends_with("\r\n\r\nbytes"));
    }
}

TEST_F(RetryTest, WhatWasPassedOverIsNotASuccessWhenItsPauseNoLongerFits) {
    std::binary_semaphore late{0};
    const RawServer slow([&late](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 503 Busy\r\nContent-Length: 4\r\n\r\nbu");
        static_cast<void>(late.try_acquire_for(700ms));
        connection.write("sy");
        connection.waitForClose();
    });
    const auto heard =
        sendWith({.responseTimeout = 1s, .retries = retrying(2, 600ms)}, get(slow.url("/")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::TimedOut));
}

TEST_F(RetryTest, APauseIsCancelledBeforeItsEndAndEndsWithItsTransport) {
    // One connection: it is free for another request only when the one before has begun its pause.
    transport = unpinned({.maxCallConnectionsPerHost = 1, .retries = retrying(2, 1h)});
    const auto first = std::make_shared<RecordingObserver>();
    failures = 1;
    const auto exchange = transport->start(get(server.url("/")), first);
    ASSERT_TRUE(succeeded(send(*transport, with(Method::POST, server.url("/"), ""))));
    EXPECT_EQ(server.connections(), 1);
    EXPECT_FALSE(first->hasCompleted());
    exchange->cancel();
    ASSERT_TRUE(first->wait());
    EXPECT_TRUE(failedWith(first, HTTPErrorCode::Cancelled));

    failures = 100;
    const auto second = start(*transport, get(server.url("/")));
    ASSERT_TRUE(succeeded(send(*transport, with(Method::POST, server.url("/"), "")), 503));
    transport.reset();
    ASSERT_TRUE(second->wait());
    EXPECT_TRUE(failedWith(second, HTTPErrorCode::Cancelled));
    EXPECT_EQ(requests, 4);
}

TEST(RetryStatusTest, SomeStatusesPass) {
    for (const int passing : {429, 502, 503, 504}) {
        EXPECT_TRUE(isPassingStatus(passing)) << passing;
    }
    for (const int other : {200, 428, 430, 500, 501, 505}) {
        EXPECT_FALSE(isPassingStatus(other)) << other;
    }
}

TEST(RetryPauseTest, GrowsAndVariesWithinItsLimits) {
    const RetrySettings settings{.maxRetries = 10, .firstPause = 100ms, .maxPause = 1000ms};
    std::set<std::chrono::milliseconds> pauses;
    for (int retry = 0; retry < 8; ++retry) {
        const auto whole = std::min<std::chrono::milliseconds>(100ms * (1 << retry), 1000ms);
        for (std::uint64_t seed = 0; seed < 20; ++seed) {
            const auto pause = retryPause(settings, retry, {}, seed).value();
            EXPECT_GE(pause, whole / 2);
            EXPECT_LE(pause, whole);
            pauses.insert(pause);
        }
    }
    EXPECT_GT(pauses.size(), 40U) << "clients would come back all at once";
}

TEST(RetryPauseTest, ReadsRetryAfterInSecondsAndAsADate) {
    const RetrySettings settings{.maxRetries = 1, .firstPause = 1s, .maxPause = 60s};
    const auto pauseAfter = [&](const std::string& value) {
        return retryPause(settings, 0, {{"Retry-After", value}}, 0);
    };
    EXPECT_EQ(pauseAfter("7"), 7s);
    EXPECT_EQ(pauseAfter("60"), 60s);
    EXPECT_EQ(pauseAfter("61"), std::nullopt);
    EXPECT_EQ(pauseAfter("Fri, 13 Nov 2015 17:20:00 GMT"), 0s);
    EXPECT_EQ(pauseAfter("Fri, 13 Nov 2065 17:20:00 GMT"), std::nullopt);
    EXPECT_LE(pauseAfter("soon"), 1s);
}

} // namespace
} // namespace KeloAPI::testing
