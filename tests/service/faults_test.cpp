#include "support/TestService.hpp"

#include <chrono>

namespace KeloServiceTest {
namespace {

using End = RawClient::End;

constexpr const char* meRequest = "GET /users/me HTTP/1.1\r\n"
                                  "kelo-session-id: kelo-development-session\r\n\r\n";

class FaultsTest : public ServiceTest {
protected:
    FaultsTest() {
        RawClient raw = rawClient();
        raw.send(meRequest);
        whole = raw.readAnswer();
    }

    void addWireFault(const std::string& type, std::size_t afterBytes, Json more = Json::object()) {
        more["type"] = type;
        more["afterBytes"] = afterBytes;
        addFault({{"match", {{"path", "/users/me"}}}, {"action", more}});
    }
    RawClient::Received ask(int silentMilliseconds = 5000) {
        RawClient raw = rawClient();
        raw.send(meRequest);
        return raw.readAll(silentMilliseconds);
    }
    /// 0, 1, inside the status line, inside the headers, at the body's first byte, inside it, one
    /// before the end, at the end.
    std::vector<std::size_t> places() const {
        const std::size_t body = whole.find("\r\n\r\n") + 4;
        return {0,    1,        10,         body / 2,         body - 1,
                body, body + 1, body + 100, whole.size() - 1, whole.size()};
    }

    /// The answer to `meRequest`, head and body, without faults.
    std::string whole;
};

TEST_F(FaultsTest, AnswersAsUsualWithoutFaults) {
    EXPECT_TRUE(whole.starts_with("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(whole.ends_with("}}"));
}

TEST_F(FaultsTest, ResetsAtEveryByte) {
    std::size_t count = 0;
    for (const std::size_t place : places()) {
        addWireFault("reset", place);
        const auto received = ask();
        EXPECT_EQ(received.end, End::Reset) << place;
        EXPECT_EQ(received.bytes, whole.substr(0, place));
        EXPECT_EQ(fired(count++), 1) << place;
    }
    EXPECT_EQ(data("/users/me").at("userId"), 1001);
}

TEST_F(FaultsTest, ClosesAtEveryByte) {
    std::size_t count = 0;
    for (const std::size_t place : places()) {
        addWireFault("close", place);
        const auto received = ask();
        EXPECT_EQ(received.end, End::Closed) << place;
        EXPECT_EQ(received.bytes, whole.substr(0, place));
        EXPECT_EQ(fired(count++), 1) << place;
    }
}

TEST_F(FaultsTest, ClosesWithoutGoodbye) {
    std::size_t count = 0;
    for (const std::size_t place : places()) {
        addWireFault("close", place, {{"abrupt", true}});
        const auto received = ask();
        EXPECT_EQ(received.end, End::Truncated) << place;
        EXPECT_EQ(received.bytes, whole.substr(0, place));
        EXPECT_EQ(fired(count++), 1) << place;
    }
}

TEST_F(FaultsTest, StallsAtEveryByte) {
    std::size_t count = 0;
    for (const std::size_t place : places()) {
        addWireFault("stall", place);
        RawClient raw = rawClient();
        raw.send(meRequest);
        const auto received = raw.readAll(100);
        EXPECT_EQ(received.end, End::Silent) << place;
        EXPECT_EQ(received.bytes, whole.substr(0, place));
        EXPECT_EQ(fired(count++), 1) << place;
    }
}

TEST_F(FaultsTest, ActsAtTheEndOfAShorterAnswer) {
    addWireFault("reset", 1000000);
    const auto received = ask();
    EXPECT_EQ(received.bytes, whole);
    EXPECT_EQ(received.end, End::Reset);
    EXPECT_EQ(fired(), 1);
}

TEST_F(FaultsTest, ResetsALargeAnswerWithoutLosingWhatWasSent) {
    addFault({{"action", {{"type", "reset"}, {"afterBytes", 1500000}}}});
    RawClient raw = rawClient();
    raw.send("GET /timelines/all?size=1000 HTTP/1.1\r\n\r\n");
    const auto received = raw.readAll();
    EXPECT_EQ(received.bytes.size(), 1500000U);
    EXPECT_EQ(received.end, End::Reset);
}

TEST_F(FaultsTest, AStalledConnectionEndsWithItsClient) {
    addWireFault("stall", 5);
    {
        RawClient raw = rawClient();
        raw.send(meRequest);
        EXPECT_EQ(raw.readAll(100).bytes.size(), 5U);
    }
    // Only the control client's own connection is left.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    int open = 0;
    do {
        open = control("GET", "/_service/connections").at("open").get<int>();
    } while (open != 1 && std::chrono::steady_clock::now() < deadline);
    EXPECT_EQ(open, 1);
}

TEST_F(FaultsTest, AStallLeavesOtherConnectionsAlone) {
    addWireFault("stall", 0);
    RawClient raw = rawClient();
    raw.send(meRequest);
    EXPECT_EQ(raw.readAll(100).bytes, "");
    EXPECT_EQ(data("/users/me").at("userId"), 1001);
}

TEST_F(FaultsTest, SendsGarbage) {
    addFault({{"action", {{"type", "garbage"}, {"bytes", 300}}}});
    const auto received = ask();
    EXPECT_EQ(received.bytes.size(), 300U);
    EXPECT_EQ(received.bytes.find("HTTP"), std::string::npos);
    EXPECT_EQ(received.end, End::Closed);
    addFault({{"action", {{"type", "garbage"}, {"base64", "SFRUUC8xLjEgMjAwDQo="}}}});
    EXPECT_EQ(ask().bytes, "HTTP/1.1 200\r\n");
    EXPECT_EQ(fired(0) + fired(1), 2);
}

TEST_F(FaultsTest, AnswersStatuses) {
    addFault({{"action", {{"type", "status"}, {"status", 503}}}});
    addFault({{"action",
               {{"type", "status"},
                {"status", 502},
                {"body", "<h1>no</h1>"},
                {"contentType", "text/html"}}}});
    auto result = get("/users/me");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 503);
    EXPECT_EQ(result->body, "");
    result = get("/users/me");
    EXPECT_EQ(result->status, 502);
    EXPECT_EQ(result->body, "<h1>no</h1>");
    EXPECT_EQ(result->get_header_value("Content-Type"), "text/html");
    EXPECT_EQ(get("/users/me")->status, 200);
    EXPECT_EQ(fired(0) + fired(1), 2);
}

TEST_F(FaultsTest, AnswersBodies) {
    addFault({{"action", {{"type", "body"}, {"body", "{\"data\": {"}}}});
    addFault({{"action", {{"type", "body"}, {"base64", "AP8="}, {"status", 201}}}});
    auto result = get("/users/me");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_EQ(result->body, "{\"data\": {");
    EXPECT_EQ(result->get_header_value("Content-Type"), "application/json");
    result = get("/users/me");
    EXPECT_EQ(result->status, 201);
    EXPECT_EQ(result->body, std::string("\0\xff", 2));
}

TEST_F(FaultsTest, AnswersErrors) {
    addFault({{"action", {{"type", "error"}, {"code", 103}, {"message", "too late"}}}});
    addFault({{"action", {{"type", "error"}, {"code", 419}, {"data", "no url at all"}}}});
    addFault({{"action", {{"type", "error"}, {"code", 230}, {"status", 200}}}});
    auto result = get("/users/me");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 401);
    EXPECT_EQ(result->body, R"({"error":"too late","code":103})");
    result = get("/users/me");
    EXPECT_EQ(result->status, 403);
    EXPECT_EQ(Json::parse(result->body).at("data"), "no url at all");
    result = get("/users/me");
    EXPECT_EQ(result->status, 200);
    EXPECT_EQ(Json::parse(result->body).at("code"), 230);
}

TEST_F(FaultsTest, Redirects) {
    addFault({{"action", {{"type", "redirect"}, {"location", "/timelines/empty"}}}});
    addFault({{"action",
               {{"type", "redirect"}, {"location", "https://example.invalid/"}, {"status", 307}}}});
    auto result = get("/users/me");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 302);
    EXPECT_EQ(result->get_header_value("Location"), "/timelines/empty");
    result = get("/users/me");
    EXPECT_EQ(result->status, 307);
    EXPECT_EQ(result->get_header_value("Location"), "https://example.invalid/");
}

TEST_F(FaultsTest, Delays) {
    addFault({{"action", {{"type", "delay"}, {"milliseconds", 200}}}});
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(data("/users/me").at("userId"), 1001);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(200));
    EXPECT_EQ(fired(), 1);
}

TEST_F(FaultsTest, AFaultThatIsNotReachedHasNotFired) {
    addFault({{"match", {{"path", "/never"}}}, {"action", {{"type", "stall"}}}});
    data("/users/me");
    EXPECT_EQ(fired(), 0);
}

TEST_F(FaultsTest, FaultsAreCleared) {
    addFault({{"times", 0}, {"action", {{"type", "status"}, {"status", 500}}}});
    EXPECT_EQ(get("/users/me")->status, 500);
    control("DELETE", "/_service/faults");
    EXPECT_EQ(control("GET", "/_service/faults").at("faults"), Json::array());
    EXPECT_EQ(get("/users/me")->status, 200);
}

TEST_F(FaultsTest, FaultyRequestsAreLoggedToo) {
    control("DELETE", "/_service/requests");
    addWireFault("reset", 0);
    ask();
    EXPECT_EQ(control("GET", "/_service/requests").at("requests").size(), 1U);
}

} // namespace
} // namespace KeloServiceTest
