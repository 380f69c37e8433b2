#include "support/TestService.hpp"

#include <atomic>
#include <thread>
#include <vector>

namespace KeloServiceTest {
namespace {

class ServerTest : public ServiceTest {};

TEST_F(ServerTest, SpeaksHttp11OverCurrentTls) {
    const RawClient raw = rawClient();
    ASSERT_TRUE(raw.isConnected());
    EXPECT_EQ(raw.protocol(), "TLSv1.3");
    EXPECT_EQ(raw.applicationProtocol(), "http/1.1");
}

TEST_F(ServerTest, KeepsConnections) {
    RawClient raw = rawClient();
    for (int i = 0; i < 300; ++i) {
        raw.send("GET /_service/health HTTP/1.1\r\n\r\n");
        ASSERT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 200")) << i;
    }
}

TEST_F(ServerTest, AnswersPipelinedRequestsInOrderAndClosesWhenAsked) {
    RawClient raw = rawClient();
    raw.send(
        "GET /users/me?1 HTTP/1.1\r\n\r\nGET /timelines/x HTTP/1.1\r\nConnection: close\r\n\r\n");
    const auto received = raw.readAll();
    EXPECT_TRUE(received.bytes.starts_with("HTTP/1.1 401"));
    EXPECT_NE(received.bytes.find("HTTP/1.1 404"), std::string::npos);
    EXPECT_EQ(received.end, RawClient::End::Closed);
}

TEST_F(ServerTest, AsksForABodyThatWaits) {
    RawClient raw = rawClient();
    raw.send("POST /sessions HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
    const auto interim = raw.readAll(300);
    EXPECT_EQ(interim.bytes, "HTTP/1.1 100 Continue\r\n\r\n");
    raw.send("{}");
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 400"));
}

TEST_F(ServerTest, AnswersHeadWithoutABody) {
    RawClient raw = rawClient();
    raw.send("HEAD /timelines/all HTTP/1.1\r\nConnection: close\r\n\r\n");
    const std::string answer = raw.readAll().bytes;
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200"));
    EXPECT_TRUE(answer.ends_with("\r\n\r\n"));
}

TEST_F(ServerTest, CompressesForThoseWhoAsk) {
    client.set_decompress(false);
    const auto packed = client.Get("/timelines/all", {{"Accept-Encoding", "gzip"}});
    const auto plain = client.Get("/timelines/all");
    ASSERT_TRUE(packed && plain);
    EXPECT_EQ(packed->get_header_value("Content-Encoding"), "gzip");
    EXPECT_FALSE(plain->has_header("Content-Encoding"));
    EXPECT_LT(packed->body.size() * 3, plain->body.size());
}

TEST_F(ServerTest, TakesLongTargets) {
    RawClient raw = rawClient();
    raw.send("GET /" + std::string(8000, 'a') + " HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 404"));
    raw.send("GET /" + std::string(9000, 'a') + " HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(raw.readAll(500).bytes.starts_with("HTTP/1.1 414"));
}

TEST_F(ServerTest, SurvivesGarbageAndAbandonedConnections) {
    for (int i = 0; i < 20; ++i) {
        RawClient raw = rawClient();
        raw.send(i % 2 == 0 ? std::string(100, '\xff') : "GET /users/me HT");
    }
    { const RawClient withoutRequest = rawClient(); }
    EXPECT_EQ(data("/users/me").at("userId"), 1001);
}

TEST_F(ServerTest, ServesManyClientsAtOnce) {
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    threads.reserve(32);
    for (int t = 0; t < 32; ++t) {
        threads.emplace_back([this, &good] {
            Client own = makeClient();
            for (int i = 0; i < 10; ++i) {
                const auto result = own.Get("/timelines/popular?size=5");
                good += result && result->status == 200 ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 320);
    EXPECT_EQ(control("GET", "/_service/connections").at("used"), 32);
}

TEST_F(ServerTest, StopsWithConnectionsOpen) {
    addFault({{"times", 0}, {"match", {{"path", "/users/me"}}}, {"action", {{"type", "stall"}}}});
    addFault({{"match", {{"path", "/timelines/all"}}},
              {"action", {{"type", "delay"}, {"milliseconds", 60000}}}});
    std::vector<RawClient> clients;
    for (int i = 0; i < 5; ++i) {
        clients.push_back(rawClient());
        clients.back().send(i < 3    ? "GET /users/me HTTP/1.1\r\n\r\n"
                            : i == 3 ? "GET /timelines/all HTTP/1.1\r\n\r\n"
                                     : "GET /half");
    }
    while (fired() < 3 || fired(1) < 1) {
        std::this_thread::yield();
    }
    const auto before = std::chrono::steady_clock::now();
    service.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
}

TEST(Listener, ListensOnLoopbackOnly) {
    using KeloService::Listener;
    for (const char* address : {"0.0.0.0", "::", "192.0.2.1", "nonsense", ""}) {
        EXPECT_THROW(Listener(address, 0), std::runtime_error) << address;
    }
    EXPECT_GT(Listener("127.0.0.1", 0).port(), 0);
    EXPECT_GT(Listener("localhost", 0).port(), 0);
}

} // namespace
} // namespace KeloServiceTest
