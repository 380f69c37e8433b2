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

TEST_F(ServerTest, IsHealthy) {
    const Json health = control("GET", "/_service/health");
    EXPECT_EQ(health.at("status"), "ok");
    EXPECT_TRUE(health.at("version").is_string());
}

TEST_F(ServerTest, CountsConnections) {
    // The control client's connection is there, but serves no request of the service.
    Json counts = control("GET", "/_service/connections");
    EXPECT_EQ(counts, Json({{"accepted", 1}, {"secured", 1}, {"used", 0}, {"open", 1}}));
    for (int i = 0; i < 300; ++i) {
        data("/users/me");
    }
    counts = control("GET", "/_service/connections");
    EXPECT_EQ(counts, Json({{"accepted", 2}, {"secured", 2}, {"used", 1}, {"open", 2}}));
}

TEST_F(ServerTest, AnswersPipelinedRequestsInOrderAndClosesWhenAsked) {
    const auto received = exchange(
        "GET /users/me?1 HTTP/1.1\r\n\r\nGET /timelines/x HTTP/1.1\r\nConnection: close\r\n\r\n");
    EXPECT_TRUE(received.bytes.starts_with("HTTP/1.1 401"));
    EXPECT_NE(received.bytes.find("HTTP/1.1 404"), std::string::npos);
    EXPECT_EQ(received.end, RawClient::End::Closed);
}

TEST_F(ServerTest, AsksForABodyThatWaits) {
    RawClient raw = rawClient();
    raw.send("POST /sessions HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
    const std::string interim = "HTTP/1.1 100 Continue\r\n\r\n";
    EXPECT_EQ(raw.readAll(interim.size()).bytes, interim);
    raw.send("{}");
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 400"));
}

TEST_F(ServerTest, AnswersHeadWithoutABody) {
    const std::string answer =
        exchange("HEAD /timelines/all HTTP/1.1\r\nConnection: close\r\n\r\n").bytes;
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
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 414"));
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
    const std::string views = "/longforms/lf-unseen/views";
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    threads.reserve(32);
    for (int t = 0; t < 32; ++t) {
        threads.emplace_back([&] {
            Client own = makeClient();
            for (int i = 0; i < 10; ++i) {
                const auto page = own.Get("/timelines/popular?size=5");
                const auto view = own.Post(views, {{sessionHeader, developmentKey}},
                                           R"({"timestamp":"1.5"})", "application/json");
                good += page && page->status == 200 && view && view->status == 200 ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, 320);
    EXPECT_EQ(control("GET", "/_service/connections").at("used"), 32);
    EXPECT_EQ(data(views).at("count"), 320);
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
    ASSERT_TRUE(eventually([this] { return fired() == 3 && fired(1) == 1; }));
    const auto before = std::chrono::steady_clock::now();
    service.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - before, timeLimit);
}

} // namespace
} // namespace KeloServiceTest
