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
        EXPECT_TRUE(whole.starts_with("HTTP/1.1 200 OK\r\n") && whole.ends_with("}}"));
    }

    void addWireFault(Json action, std::size_t afterBytes) {
        action["afterBytes"] = afterBytes;
        addFault({{"match", {{"path", "/users/me"}}}, {"action", action}});
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

struct WireCase {
    const char* action;
    End end;
};

class WireFaultsTest : public FaultsTest, public ::testing::WithParamInterface<WireCase> {};

TEST_P(WireFaultsTest, ActAtEveryByte) {
    const auto [action, end] = GetParam();
    std::size_t count = 0;
    for (const std::size_t place : places()) {
        addWireFault(Json::parse(action), place);
        const auto received = end == End::Silent ? exchange(meRequest, place) : exchange(meRequest);
        EXPECT_EQ(received.end, end) << place;
        EXPECT_EQ(received.bytes, whole.substr(0, place));
        EXPECT_TRUE(eventually([&] { return fired(count) == 1; })) << place;
        ++count;
    }
    EXPECT_EQ(data("/users/me").at("userId"), 1001);
}

INSTANTIATE_TEST_SUITE_P(Actions, WireFaultsTest,
                         ::testing::Values(WireCase{R"({"type": "reset"})", End::Reset},
                                           WireCase{R"({"type": "close"})", End::Closed},
                                           WireCase{R"({"type": "close", "abrupt": true})",
                                                    End::Truncated},
                                           WireCase{R"({"type": "stall"})", End::Silent}));

TEST_F(FaultsTest, ActsAtTheEndOfAShorterAnswer) {
    addWireFault({{"type", "reset"}}, 1000000);
    const auto received = exchange(meRequest);
    EXPECT_EQ(received.bytes, whole);
    EXPECT_EQ(received.end, End::Reset);
    EXPECT_EQ(fired(), 1);
}

TEST_F(FaultsTest, ResetsALargeAnswerWithoutLosingWhatWasSent) {
    addFault({{"action", {{"type", "reset"}, {"afterBytes", 1500000}}}});
    const auto received = exchange("GET /timelines/all?size=1000 HTTP/1.1\r\n\r\n");
    EXPECT_EQ(received.bytes.size(), 1500000U);
    EXPECT_EQ(received.end, End::Reset);
}

TEST_F(FaultsTest, AStalledConnectionEndsWithItsClient) {
    addWireFault({{"type", "stall"}}, 5);
    {
        RawClient raw = rawClient();
        raw.send(meRequest);
        EXPECT_EQ(raw.readAll(5).bytes.size(), 5U);
        EXPECT_EQ(data("/users/me").at("userId"), 1001); // on another connection
    }
    EXPECT_TRUE(eventually([this] {
        return control("GET", "/_service/connections").at("open") == 2; // the two clients' own
    }));
}

TEST_F(FaultsTest, SendsGarbage) {
    addFault({{"action", {{"type", "garbage"}, {"bytes", 300}}}});
    const auto received = exchange(meRequest);
    EXPECT_EQ(received.bytes.size(), 300U);
    EXPECT_EQ(received.bytes.find("HTTP"), std::string::npos);
    EXPECT_EQ(received.end, End::Closed);
    addFault({{"action", {{"type", "garbage"}, {"base64", "SFRUUC8xLjEgMjAwDQo="}}}});
    EXPECT_EQ(exchange(meRequest).bytes, "HTTP/1.1 200\r\n");
    EXPECT_EQ(fired(0) + fired(1), 2);
}

struct AnswerCase {
    const char* action;
    int status;
    std::string body;
    std::pair<const char*, const char*> header;
};

class AnswerFaultsTest : public FaultsTest, public ::testing::WithParamInterface<AnswerCase> {};

TEST_P(AnswerFaultsTest, AnswerOnce) {
    const auto& [action, status, body, header] = GetParam();
    addFault({{"action", Json::parse(action)}});
    const auto result = get("/users/me");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, status);
    EXPECT_EQ(result->body, body);
    EXPECT_EQ(result->get_header_value(header.first), header.second);
    EXPECT_EQ(fired(), 1);
    EXPECT_EQ(get("/users/me")->status, 200);
}

const std::pair<const char*, const char*> jsonType{"Content-Type", "application/json"};

INSTANTIATE_TEST_SUITE_P(
    Actions, AnswerFaultsTest,
    ::testing::Values(
        AnswerCase{R"({"type":"status","status":503})", 503, "", {"Content-Length", "0"}},
        AnswerCase{
            R"({"type":"status","status":502,"body":"<h1>no</h1>","contentType":"text/html"})",
            502,
            "<h1>no</h1>",
            {"Content-Type", "text/html"}},
        AnswerCase{R"({"type":"body","body":"{\"data\": {"})", 200, "{\"data\": {", jsonType},
        AnswerCase{R"({"type":"body","base64":"AP8=","status":201})", 201, std::string("\0\xff", 2),
                   jsonType},
        AnswerCase{R"({"type":"error","code":103,"message":"too late"})", 401,
                   R"({"error":"too late","code":103})", jsonType},
        AnswerCase{R"({"type":"error","code":419,"data":"no url at all"})", 403,
                   R"({"error":"A fault script says so","code":419,"data":"no url at all"})",
                   jsonType},
        AnswerCase{R"({"type":"error","code":230,"status":200})", 200,
                   R"({"error":"A fault script says so","code":230})", jsonType},
        AnswerCase{R"({"type":"redirect","location":"/timelines/empty"})",
                   302,
                   "",
                   {"Location", "/timelines/empty"}},
        AnswerCase{R"({"type":"redirect","location":"https://example.invalid/","status":307})",
                   307,
                   "",
                   {"Location", "https://example.invalid/"}}));

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
    addWireFault({{"type", "reset"}}, 0);
    exchange(meRequest);
    EXPECT_EQ(control("GET", "/_service/requests").at("requests").size(), 1U);
}

} // namespace
} // namespace KeloServiceTest
