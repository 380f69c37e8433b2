#include "support/Nginx.hpp"
#include "support/TestServer.hpp"
#include "TransportTest.hpp"

#include <atomic>
#include <set>

namespace KeloAPI::testing {
namespace {

class HTTP2Test : public TransportTest {
protected:
    void SetUp() override {
        if (!Nginx::isInstalled()) {
            GTEST_SKIP() << "nginx is not installed";
        }
        nginx = std::make_unique<Nginx>(leaf);
        ASSERT_TRUE(nginx->isServing());
        transport = pinning("localhost", {leaf.certificate()});
    }

    static std::string connection(const Observer& observer) {
        const auto& fields = observer->responses.at(0).headerFields;
        const auto found = fields.find("X-Connection");
        return found == fields.end() ? "" : found->second;
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    std::unique_ptr<Nginx> nginx;
    std::shared_ptr<CurlTransport> transport;
};

TEST_F(HTTP2Test, IsSpokenWhereTheServerSpeaksIt) {
    const auto heard = send(*transport, get(nginx->url("/quick")));
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "quick");
    EXPECT_EQ(heard->responses.at(0).headerFields.find("x-protocol")->second, "HTTP/2.0");
}

TEST_F(HTTP2Test, SixtyFourRequestsInFlightShareAConnection) {
    constexpr std::size_t all = 64;
    std::atomic<int> begun = 0;
    std::atomic<int> begunAtFirstEnd = -1;
    std::vector<Observer> observers;
    for (std::size_t i = 0; i < all; ++i) {
        observers.push_back(std::make_shared<RecordingObserver>());
        observers.back()->onResponse = [&] { ++begun; };
        observers.back()->onComplete = [&] {
            int none = -1;
            begunAtFirstEnd.compare_exchange_strong(none, begun);
        };
        transport->start(get(nginx->url("/slow")), observers.back());
    }
    std::set<std::string> connections;
    for (const Observer& observer : observers) {
        ASSERT_TRUE(observer->wait());
        ASSERT_TRUE(succeeded(observer));
        EXPECT_EQ(observer->body, nginx->slowBody());
        connections.insert(connection(observer));
    }
    EXPECT_EQ(begunAtFirstEnd, 64) << "they were all in flight at once";
    EXPECT_EQ(connections.size(), 1U);
}

TEST_F(HTTP2Test, CancellingOneLeavesTheOthersAlone) {
    std::vector<Observer> observers;
    std::vector<std::shared_ptr<Exchange>> exchanges;
    std::atomic<int> begun = 0;
    for (int i = 0; i < 16; ++i) {
        observers.push_back(std::make_shared<RecordingObserver>());
        observers.back()->onResponse = [&] { ++begun; };
        exchanges.push_back(transport->start(get(nginx->url("/slow")), observers.back()));
    }
    for (int i = 0; i < 1000 && begun < 16; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ASSERT_EQ(begun, 16);
    exchanges[7]->cancel();
    ASSERT_TRUE(observers[7]->wait(std::chrono::milliseconds(500)));
    EXPECT_TRUE(failedWith(observers[7], HTTPErrorCode::Cancelled));
    EXPECT_FALSE(observers[6]->hasCompleted()) << "the others are still under way";
    for (std::size_t i = 0; i < observers.size(); ++i) {
        ASSERT_TRUE(observers[i]->wait());
        if (i != 7) {
            EXPECT_TRUE(succeeded(observers[i]));
            EXPECT_EQ(observers[i]->body, nginx->slowBody());
            EXPECT_EQ(connection(observers[i]), connection(observers[0]));
        }
    }
    // And the connection goes on being of use.
    const auto next = send(*transport, get(nginx->url("/quick")));
    EXPECT_TRUE(succeeded(next));
    EXPECT_EQ(connection(next), connection(observers[0]));
}

TEST_F(HTTP2Test, TimeOutOfOneLeavesTheOthersAlone) {
    auto other = std::make_shared<RecordingObserver>();
    transport->start(get(nginx->url("/slow")), other);
    auto request = get(nginx->url("/stalling"));
    request.timeoutInterval = std::chrono::milliseconds(300);
    EXPECT_TRUE(failedWith(send(*transport, request), HTTPErrorCode::TimedOut));
    ASSERT_TRUE(other->wait());
    EXPECT_TRUE(succeeded(other));
}

TEST_F(HTTP2Test, CarriesBodiesBothWays) {
    std::string body(2'000'000, '\0');
    for (std::size_t i = 0; i < body.size(); ++i) {
        body[i] = static_cast<char>(i * 7 % 253);
    }
    const auto sent = send(*transport, with(Method::PUT, nginx->url("/files/upload"), body));
    EXPECT_TRUE(succeeded(sent, 201));
    ASSERT_FALSE(sent->sent.empty());
    EXPECT_EQ(sent->sent.back(), std::make_pair(std::int64_t{2'000'000}, std::int64_t{2'000'000}));
    const auto back = send(*transport, get(nginx->url("/files/upload")));
    EXPECT_TRUE(succeeded(back));
    EXPECT_TRUE(back->body == body);
    EXPECT_EQ(back->responses.at(0).expectedContentLength, 2'000'000);
}

TEST_F(HTTP2Test, EmptyFieldsAndRedirects) {
    auto request = get(nginx->url("/moved"));
    request.headerFields = {{"X-Empty", ""}, {"X-Text", "t"}};
    const auto heard = send(*transport, request);
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->responses.at(0).url.absoluteString(), nginx->url("/quick"));
    EXPECT_EQ(heard->responses.at(0).headerFields.find("X-Echo")->second, "[][t]");
}

} // namespace
} // namespace KeloAPI::testing
