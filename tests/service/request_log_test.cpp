#include "service/Encoding.hpp"
#include "support/TestService.hpp"

namespace KeloServiceTest {
namespace {

class RequestLogTest : public ServiceTest {
protected:
    Json requests(const std::string& query = "") {
        return control("GET", "/_service/requests" + query).at("requests");
    }
    Json only() {
        const Json all = requests();
        EXPECT_EQ(all.size(), 1U);
        return all.empty() ? Json::object() : all.at(0);
    }
};

TEST_F(RequestLogTest, KeepsTheTargetAndHeadersAsSent) {
    RawClient raw = rawClient();
    raw.send("GET /timelines/tags/%63%61ts?b=2&a=%20+&&x HTTP/1.1\r\n"
             "host: somewhere\r\n"
             "X-Kelo-Client: one, two\r\n"
             "x-empty:\r\n"
             "ACCEPT-Language: pt\r\n"
             "X-Kelo-Client: three\r\n\r\n");
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 200 OK\r\n"));
    const Json request = only();
    EXPECT_EQ(request.at("method"), "GET");
    EXPECT_EQ(request.at("target"), "/timelines/tags/%63%61ts?b=2&a=%20+&&x");
    EXPECT_EQ(request.at("path"), "/timelines/tags/%63%61ts");
    EXPECT_EQ(request.at("query"), "b=2&a=%20+&&x");
    EXPECT_EQ(request.at("headers"), Json::parse(R"([["host","somewhere"],
        ["X-Kelo-Client","one, two"],["x-empty",""],["ACCEPT-Language","pt"],
        ["X-Kelo-Client","three"]])"));
    EXPECT_EQ(request.at("body"), "");
    EXPECT_EQ(request.at("bodyBytes"), 0);
    EXPECT_EQ(request.at("number"), 1);
}

TEST_F(RequestLogTest, KeepsBodiesByteForByte) {
    std::string body;
    for (int i = 0; i < 70000; ++i) {
        body += static_cast<char>(i * 31);
    }
    for (const char* type : {"application/octet-stream", "application/x-www-form-urlencoded",
                             "multipart/form-data; boundary=x", "application/json"}) {
        control("DELETE", "/_service/requests");
        ASSERT_TRUE(client.Put("/anything", body, type)) << type;
        const Json request = only();
        EXPECT_EQ(request.at("method"), "PUT");
        EXPECT_EQ(request.at("body"), KeloService::encodeBase64(body)) << type;
        EXPECT_EQ(request.at("bodyBytes"), body.size());
    }
}

TEST_F(RequestLogTest, UndoesChunks) {
    RawClient raw = rawClient();
    raw.send("POST /sessions HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"
             "3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
    EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 400"));
    EXPECT_EQ(only().at("body"), KeloService::encodeBase64("abcde"));
    EXPECT_EQ(only().at("bodyBytes"), 5);
}

TEST_F(RequestLogTest, AnswersARequestThatAnnouncesNoBody) {
    RawClient raw = rawClient();
    for (const char* method : {"POST", "PUT", "DELETE", "PATCH"}) {
        raw.send(std::string(method) + " /users/me HTTP/1.1\r\n\r\n");
        EXPECT_TRUE(raw.readAnswer().starts_with("HTTP/1.1 405")) << method;
    }
    EXPECT_EQ(requests().size(), 4U);
}

TEST_F(RequestLogTest, KeepsRequestsThatAreNotUnderstood) {
    EXPECT_TRUE(exchange("BREW /tea HTTP/1.1\r\nA: b\r\n\r\n").bytes.starts_with("HTTP/1.1 400"));
    EXPECT_EQ(only().at("method"), "BREW");
}

TEST_F(RequestLogTest, ListsWhatCameSince) {
    for (int i = 1; i <= 4; ++i) {
        get("/users/me?n=" + std::to_string(i));
    }
    makeClient().Get("/users/me?n=5");
    const Json later = control("GET", "/_service/requests?since=2");
    EXPECT_EQ(later.at("last"), 5);
    const Json& listed = later.at("requests");
    ASSERT_EQ(listed.size(), 3U);
    EXPECT_EQ(listed[0].at("query"), "n=3");
    EXPECT_EQ(listed[0].at("connection"), listed[1].at("connection"));
    EXPECT_NE(listed[0].at("connection"), listed[2].at("connection"));
    EXPECT_EQ(requests("?since=5").size(), 0U);
    // Clearing is not logged itself, and numbers go on.
    control("DELETE", "/_service/requests");
    EXPECT_EQ(requests(), Json::array());
    get("/users/me");
    EXPECT_EQ(only().at("number"), 6);
}

} // namespace
} // namespace KeloServiceTest
