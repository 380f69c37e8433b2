#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/Nginx.hpp"
#include "support/RawServer.hpp"
#include "support/RecordedTraffic.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/http/Manager.hpp>

#include <atomic>
#include <semaphore>

namespace KeloAPI::testing {
namespace {

using namespace std::chrono_literals;

/// A manager over the network and its observer.
class TrafficTest : public TransportTest {
protected:
    using Told = RecordedTraffic::Exchange;

    TrafficTest() { open({}); }

    void open(TransportSettings settings) {
        settings.observer = observer;
        const ServerTrustPolicyManager trust(
            {{"localhost", PinCertificates{{leaf.certificate()}}}});
        manager = std::make_unique<Manager>(trust, settings);
    }

    static FixedRequest fixed(const URLRequest& request) {
        FixedRequest made;
        made.request = request;
        return made;
    }

    /// What is told of a request, once it has ended.
    Told toldOf(const std::shared_ptr<Request>& request) {
        const auto error = errorOf(request);
        const auto all = observer->whenEnded(++sent);
        EXPECT_EQ(all.size(), sent);
        EXPECT_EQ(all.back().error, error);
        return all.back();
    }
    Told toldOf(const URLRequest& request) { return toldOf(manager->request(fixed(request))); }
    HopReport onlyHop(const Told& told) {
        EXPECT_EQ(told.hops.size(), 1U);
        return told.hops.empty() ? HopReport() : told.hops.front();
    }

    static ::testing::AssertionResult failedWith(const std::optional<Error>& error,
                                                 HTTPErrorCode code) {
        return error && isHTTPError(*error, code)
                   ? ::testing::AssertionSuccess()
                   : ::testing::AssertionFailure()
                         << (error ? error->description() : "there is no error");
    }

    void TearDown() override {
        manager.reset();
        EXPECT_EQ(observer->faults(), 0);
        for (const Told& told : observer->whenEnded(0)) {
            EXPECT_EQ(told.ends, 1);
            for (const HopReport& hop : told.hops) {
                EXPECT_GE(hop.begin - hop.waited, told.facts.start);
                EXPECT_LE(hop.begin + hop.total, told.end);
            }
        }
    }

    const TestCertificate leaf = TestCertificate::selfSigned({});
    std::shared_ptr<RecordedTraffic> observer = std::make_shared<RecordedTraffic>();
    std::unique_ptr<Manager> manager;
    std::size_t sent = 0;
};

TEST_F(TrafficTest, NamesTheProtocolOfAnOldServer) {
    const RawServer old(leaf.serverContext(),
                        answeringAll("HTTP/1.0 200 OK\r\nContent-Length: 2\r\n\r\nok"));
    EXPECT_EQ(onlyHop(toldOf(get(old.secureUrl("/")))).protocol, "http/1.0");
}

TEST_F(TrafficTest, TimesEachStepOfANewConnectionAndNoneOfAKeptOne) {
    const RawServer serial(leaf.serverContext(), answeringAll(okResponse()));
    std::vector<std::pair<std::string, std::string>> table = {{"http/1.1", serial.secureUrl("/")}};
    std::optional<Nginx> nginx;
    if (Nginx::isInstalled()) {
        table.emplace_back("h2", nginx.emplace(leaf).url("/quick"));
    }
    for (const auto& [protocol, url] : table) {
        SCOPED_TRACE(protocol);
        const HopReport first = onlyHop(toldOf(get(url)));
        ASSERT_TRUE(first.nameFound && first.connected && first.secured && first.firstByte);
        EXPECT_GT(*first.nameFound, 0us);
        EXPECT_LE(*first.nameFound, *first.connected);
        EXPECT_LT(*first.connected, *first.secured);
        EXPECT_LT(*first.secured, *first.firstByte);
        EXPECT_LE(*first.firstByte, first.total);
        EXPECT_FALSE(first.reusedConnection);

        const HopReport second = onlyHop(toldOf(get(url)));
        EXPECT_TRUE(second.reusedConnection);
        EXPECT_FALSE(second.nameFound || second.connected || second.secured);
        ASSERT_TRUE(second.firstByte);
        EXPECT_LE(*second.firstByte, second.total);
        for (const HopReport& hop : {first, second}) {
            EXPECT_EQ(hop.protocol, protocol);
            EXPECT_EQ(hop.url.absoluteString(), url);
            EXPECT_EQ(hop.statusCode, 200);
            EXPECT_FALSE(hop.error);
            EXPECT_GT(hop.bytesSent, 0);
            EXPECT_GT(hop.bytesReceived, 0);
        }
    }
}

TEST_F(TrafficTest, CountsHeadsAndBodiesAndWaitsForTheResponse) {
    const std::string response = okResponse("a response of some length");
    const auto delay = 100ms;
    const RawServer server([&](RawConnection& connection) {
        connection.readRequest();
        std::this_thread::sleep_for(delay);
        connection.write(response);
    });
    const auto expectCounted = [&](const Told& told) {
        const HopReport hop = onlyHop(told);
        EXPECT_EQ(hop.bytesSent, static_cast<std::int64_t>(server.received().back().size()));
        EXPECT_EQ(hop.bytesReceived, static_cast<std::int64_t>(response.size()));
        EXPECT_FALSE(hop.secured) << "there is no TLS";
        EXPECT_GE(hop.firstByte.value_or(0us), delay);
    };
    expectCounted(toldOf(get(server.url("/"))));
    const auto request = fixed(with(Method::PUT, server.url("/"), ""));
    expectCounted(toldOf(manager->upload(request, Data(std::string(100'000, 'x')))));
    const TemporaryFolder folder;
    const Told download =
        toldOf(manager->download(fixed(get(server.url("/"))), URL::fileURL(folder.path("file"))));
    expectCounted(download);
    EXPECT_EQ(download.facts.kind, TransferKind::Download);
}

TEST_F(TrafficTest, ARedirectIsAHop) {
    const RawServer server(leaf.serverContext(), [](RawConnection& connection) {
        connection.serve([](const std::string& request) -> std::string {
            return pathOf(request) != "/away" ? okResponse()
                                              : "HTTP/1.1 303 See Other\r\nLocation: /there?a\r\n"
                                                "Content-Length: 0\r\n\r\n";
        });
    });
    const Told told = toldOf(with(Method::POST, server.secureUrl("/away"), "body"));
    EXPECT_FALSE(told.error);
    ASSERT_EQ(told.hops.size(), 2U);
    EXPECT_EQ(told.facts.url, told.hops[0].url);
    EXPECT_EQ(told.hops[0].method, Method::POST);
    EXPECT_EQ(told.hops[0].statusCode, 303);
    EXPECT_EQ(told.hops[1].method, Method::GET);
    EXPECT_EQ(told.hops[1].url.absoluteString(), server.secureUrl("/there?a"));
    EXPECT_EQ(told.hops[1].statusCode, 200);
    EXPECT_TRUE(told.hops[1].reusedConnection);
}

TEST_F(TrafficTest, ARetryIsAHop) {
    std::atomic<int> requests = 0;
    const RawServer server([&](RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            const int place = ++requests;
            if (place == 1) {
                return; // the connection closes without a response
            }
            connection.write(place == 2 ? "HTTP/1.1 503 Busy\r\nContent-Length: 0\r\n\r\n"
                                        : okResponse());
        }
    });
    open({.retries = {.maxRetries = 2, .firstPause = 1ms}});
    const Told told = toldOf(with(Method::PUT, server.url("/"), "body"));
    EXPECT_FALSE(told.error);
    ASSERT_EQ(told.hops.size(), 3U);
    EXPECT_TRUE(failedWith(told.hops[0].error, HTTPErrorCode::ConnectionLost));
    EXPECT_FALSE(told.hops[0].firstByte);
    EXPECT_EQ(told.hops[0].protocol, "");
    EXPECT_EQ(told.hops[1].statusCode, 503);
    EXPECT_FALSE(told.hops[1].error);
    EXPECT_EQ(told.hops[2].statusCode, 200);
}

TEST_F(TrafficTest, AFailedHopTellsHowFarItGot) {
    const HopReport refused = onlyHop(toldOf(get("http://127.0.0.1:1/")));
    EXPECT_TRUE(failedWith(refused.error, HTTPErrorCode::CannotConnect));
    EXPECT_TRUE(refused.nameFound);
    EXPECT_FALSE(refused.connected || refused.firstByte || refused.reusedConnection);
    EXPECT_EQ(refused.statusCode, 0);

    const RawServer other(TestCertificate::selfSigned({}).serverContext(),
                          answeringAll(okResponse()));
    const HopReport distrusted = onlyHop(toldOf(get(other.secureUrl("/"))));
    EXPECT_TRUE(failedWith(distrusted.error, HTTPErrorCode::ServerTrust));
    EXPECT_TRUE(distrusted.nameFound);
    EXPECT_FALSE(distrusted.connected || distrusted.secured || distrusted.firstByte);

    const RawServer cut(answeringOnce("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nsome"));
    const HopReport partial = onlyHop(toldOf(get(cut.url("/"))));
    EXPECT_TRUE(failedWith(partial.error, HTTPErrorCode::ConnectionLost));
    EXPECT_TRUE(partial.firstByte);
    EXPECT_EQ(partial.statusCode, 200);
}

TEST_F(TrafficTest, ACancelledExchangeEndsOnceWithItsHopIfItWasSent) {
    std::binary_semaphore reached{0};
    const RawServer silent([&](RawConnection& connection) {
        connection.readRequest();
        reached.release();
        connection.waitForClose();
    });
    for (const bool byManager : {false, true}) {
        open({.maxCallConnectionsPerHost = 1});
        const auto first = manager->request(fixed(get(silent.url("/first"))));
        const auto second = manager->request(fixed(get(silent.url("/second"))));
        ASSERT_TRUE(reached.try_acquire_for(timeLimit));
        if (byManager) {
            manager.reset();
        } else {
            second->cancel();
            first->cancel();
        }
        sent += 2;
        const auto all = observer->whenEnded(sent);
        ASSERT_EQ(all.size(), sent);
        for (const Told& told : {all[sent - 2], all[sent - 1]}) {
            EXPECT_TRUE(failedWith(told.error, HTTPErrorCode::Cancelled));
        }
        const HopReport hop = onlyHop(all[sent - 2]);
        EXPECT_TRUE(failedWith(hop.error, HTTPErrorCode::Cancelled));
        EXPECT_TRUE(hop.connected);
        EXPECT_FALSE(hop.firstByte);
        EXPECT_TRUE(all[sent - 1].hops.empty()) << "it was never sent";
    }
}

TEST_F(TrafficTest, AHopTellsHowLongItWaitedForAConnection) {
    std::binary_semaphore reached{0};
    std::binary_semaphore goOn{0};
    const RawServer server([&](RawConnection& connection) {
        connection.serve([&](const std::string& request) {
            if (pathOf(request) == "/first") {
                reached.release();
                EXPECT_TRUE(goOn.try_acquire_for(timeLimit));
            }
            return okResponse();
        });
    });
    open({.maxCallConnectionsPerHost = 1});
    const auto first = manager->request(fixed(get(server.url("/first"))));
    ASSERT_TRUE(reached.try_acquire_for(timeLimit));
    const auto second = manager->request(fixed(get(server.url("/second"))));
    goOn.release();
    EXPECT_FALSE(errorOf(first));
    EXPECT_FALSE(errorOf(second));
    const auto all = observer->whenEnded(2);
    const HopReport before = onlyHop(all.at(0));
    const HopReport behind = onlyHop(all.at(1));
    EXPECT_GT(behind.waited, 0us);
    EXPECT_TRUE(behind.reusedConnection);
    EXPECT_GE(behind.begin + 1ms, before.begin + before.total) << "but for rounding";
}

/// Counts the hops that it is told of.
class HopCounter : public RecordingObserver {
public:
    void didFinishHop(const HopReport&) override { ++hops; }
    int hops = 0;
};

TEST_F(TrafficTest, NothingIsMeasuredWhereNobodyListens) {
    const RawServer server(answeringAll(okResponse()));
    for (const auto& listener : {std::shared_ptr<RecordedTraffic>(), observer}) {
        const auto transport = unpinned({.observer = listener});
        const auto counter = std::make_shared<HopCounter>();
        EXPECT_TRUE(succeeded(send(*transport, get(server.url("/")), counter)));
        EXPECT_EQ(counter->hops, listener ? 1 : 0);
    }
}

} // namespace
} // namespace KeloAPI::testing
