#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/Retry.hpp>
#include <KeloAPI/http/internal/MemorySink.hpp>

#include <atomic>
#include <future>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string responseOf(const std::string& statusLine, const std::string& fields,
                       const std::string& body) {
    return "HTTP/1.1 " + statusLine + "\r\n" + fields +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

class SettingsTest : public TransportTest {
protected:
    Observer sendWith(const TransportSettings& settings, const URLRequest& request) {
        transport = unpinned(settings);
        return send(*transport, request);
    }

    std::shared_ptr<CurlTransport> transport;
};

TEST_F(SettingsTest, ConnectingMayTakeNoLongerThanItsLimit) {
    RawServer silent([](RawConnection& connection) { connection.waitForClose(); });
    const auto heard = sendWith({.connectTimeout = 200ms}, get(silent.url("/", "https")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::TimedOut));
}

TEST_F(SettingsTest, TheShorterLimitOfSilenceHolds) {
    RawServer silent([](RawConnection& connection) { connection.waitForClose(); });
    EXPECT_TRUE(failedWith(sendWith({.silenceTimeout = 200ms}, get(silent.url("/"))),
                           HTTPErrorCode::TimedOut));
    URLRequest request = get(silent.url("/"));
    request.timeoutInterval = 200ms;
    EXPECT_TRUE(failedWith(sendWith({.silenceTimeout = 1h}, request), HTTPErrorCode::TimedOut));
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
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.write(responseOf("200 OK", "X-Long: " + std::string(2000, 'x') + "\r\n", "ok"));
    });
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

TEST(MemorySinkTest, SoHaveAllBodiesTogether) {
    MemorySink first(1000, 1000);
    MemorySink second(1000, 100);
    EXPECT_TRUE(first.take(std::string(90, 'x')));
    EXPECT_TRUE(second.take("0123456789"));
    EXPECT_FALSE(second.take("x"));
    EXPECT_TRUE(isHTTPError(second.finish({}).value(), HTTPErrorCode::OutOfResources));
}

TEST_F(SettingsTest, AProxyIsUsedAndNoneWhereItIsEmpty) {
    RawServer proxy([](RawConnection& connection) {
        connection.write(responseOf("200 OK", "", connection.readRequest()));
    });
    const auto heard = sendWith({.proxy = proxy.url("")}, get("http://service.example/a"));
    EXPECT_TRUE(succeeded(heard));
    EXPECT_TRUE(heard->body.starts_with("GET http://service.example/a HTTP/1.1"));

    setenv("http_proxy", proxy.url("").c_str(), 1);
    EXPECT_TRUE(failedWith(sendWith({.proxy = ""}, get("http://127.0.0.1:1/")),
                           HTTPErrorCode::CannotConnect));
    unsetenv("http_proxy");
}

/// A server that fails so many times before it answers "ok".
class RetryTest : public SettingsTest {
protected:
    static TransportSettings retrying(int retries) {
        return {.retries = {.maxRetries = retries, .firstPause = 20ms}};
    }

    std::string failure = responseOf("503 Busy", "", "busy");
    int failures = 2;
    std::atomic<int> requests = 0;
    std::string lastRequest;
    RawServer server{[this](RawConnection& connection) {
        for (std::string request = connection.readRequest(); !request.empty();
             request = connection.readRequest()) {
            lastRequest = request;
            if (++requests > failures) {
                connection.write(responseOf("200 OK", "", "ok"));
            } else if (failure.empty()) {
                return; // the connection closes without a response
            } else {
                connection.write(failure);
            }
        }
    }};
};

TEST_F(RetryTest, IsOffUnlessItIsAskedFor) {
    EXPECT_TRUE(succeeded(sendWith({}, get(server.url("/"))), 503));
    EXPECT_EQ(requests, 1);
}

TEST_F(RetryTest, GoesOnUntilAResponseIsThere) {
    const auto begin = Clock::now();
    const auto heard = sendWith(retrying(2), get(server.url("/")));
    EXPECT_TRUE(succeeded(heard)) << "the head and the end are told once";
    EXPECT_EQ(heard->body, "ok");
    EXPECT_EQ(requests, 3);
    EXPECT_GE(Clock::now() - begin, 30ms) << "at least half of 20 ms and of 40 ms";
}

TEST_F(RetryTest, EndsWithTheLastResponse) {
    const auto heard = sendWith(retrying(1), get(server.url("/")));
    EXPECT_TRUE(succeeded(heard, 503));
    EXPECT_EQ(heard->body, "busy");
    EXPECT_EQ(requests, 2);
}

TEST_F(RetryTest, FollowsALostConnection) {
    failure.clear();
    EXPECT_TRUE(succeeded(sendWith(retrying(2), get(server.url("/")))));
    EXPECT_EQ(requests, 3);
}

TEST_F(RetryTest, SendsABodyAgainWhole) {
    EXPECT_TRUE(succeeded(sendWith(retrying(2), with(Method::PUT, server.url("/"), "bytes"))));
    EXPECT_TRUE(lastRequest.ends_with("\r\n\r\nbytes"));
}

TEST_F(RetryTest, DoesNotRepeatWhatMayNotBe) {
    EXPECT_TRUE(
        succeeded(sendWith(retrying(2), with(Method::POST, server.url("/"), "bytes")), 503));
    EXPECT_EQ(requests, 1);
}

TEST_F(RetryTest, LeavesOtherResponsesAlone) {
    failure = responseOf("500 Broken", "", "no");
    EXPECT_TRUE(succeeded(sendWith(retrying(2), get(server.url("/"))), 500));
    EXPECT_EQ(requests, 1);
}

TEST_F(RetryTest, HonoursRetryAfterUpToTheLongestPause) {
    failure = responseOf("429 Slow Down", "Retry-After: 0\r\n", "");
    TransportSettings settings = retrying(2);
    settings.retries.firstPause = 1h;
    settings.retries.maxPause = 1h;
    EXPECT_TRUE(succeeded(sendWith(settings, get(server.url("/")))));
    requests = 0;
    failure = responseOf("429 Slow Down", "Retry-After: 7200\r\n", "");
    EXPECT_TRUE(succeeded(sendWith(settings, get(server.url("/"))), 429));
    EXPECT_EQ(requests, 1);
}

TEST_F(RetryTest, WhatWouldComeTooLateIsNotAwaited) {
    TransportSettings settings = retrying(2);
    settings.retries.firstPause = 10s;
    settings.responseTimeout = 3s;
    EXPECT_TRUE(succeeded(sendWith(settings, get(server.url("/"))), 503));
}

TEST_F(RetryTest, APauseIsCancelledAtOnceAndEndsWithItsTransport) {
    TransportSettings settings = retrying(2);
    settings.retries.firstPause = 1h;
    settings.retries.maxPause = 1h;
    transport = unpinned(settings);
    const auto first = std::make_shared<RecordingObserver>();
    const auto exchange = transport->start(get(server.url("/")), first);
    // Behind the pause of the first, on the same thread.
    const auto second = std::make_shared<RecordingObserver>();
    failures = 1;
    while (requests == 0) {
        std::this_thread::yield();
    }
    ASSERT_TRUE(succeeded(send(*transport, with(Method::POST, server.url("/"), ""))));
    EXPECT_FALSE(first->hasCompleted());
    exchange->cancel();
    ASSERT_TRUE(first->wait());
    EXPECT_TRUE(failedWith(first, HTTPErrorCode::Cancelled));

    failures = 100;
    transport->start(get(server.url("/")), second);
    ASSERT_TRUE(succeeded(send(*transport, with(Method::POST, server.url("/"), "")), 503));
    transport.reset();
    ASSERT_TRUE(second->wait());
    EXPECT_TRUE(failedWith(second, HTTPErrorCode::Cancelled));
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
    EXPECT_EQ(pauseAfter("61"), std::nullopt);
    EXPECT_EQ(pauseAfter("Fri, 13 Nov 2015 17:20:00 GMT"), 0s);
    EXPECT_EQ(pauseAfter("Fri, 13 Nov 2065 17:20:00 GMT"), std::nullopt);
    EXPECT_LE(pauseAfter("soon"), 1s);
}

} // namespace
} // namespace KeloAPI::testing
