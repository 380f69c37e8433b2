#include "service/Encoding.hpp"
#include "service/http/Request.hpp"
#include "service/http/Router.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using KeloService::Answer;
using KeloService::Call;
using KeloService::decodeBase64;
using KeloService::encodeBase64;
using KeloService::Json;
using KeloService::parseHead;
using KeloService::Request;
using KeloService::RequestBody;
using KeloService::RequestRecorder;
using KeloService::Router;
using KeloService::ServiceError;

Request requestFor(const std::string& target) {
    return parseHead("GET " + target + " HTTP/1.1\r\n\r\n");
}

TEST(Request, ReadsTheHeadAsItIs) {
    const Request request = parseHead("POST /a%20b?x=1 HTTP/1.1\r\n"
                                      "X-One:1\r\n"
                                      "x-ONE:  2  \r\n"
                                      "Empty:\r\n"
                                      "Time: 10:30\r\n\r\n");
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.target, "/a%20b?x=1");
    const std::vector<std::pair<std::string, std::string>> headers = {
        {"X-One", "1"}, {"x-ONE", "2"}, {"Empty", ""}, {"Time", "10:30"}};
    EXPECT_EQ(request.headers, headers);
    EXPECT_EQ(request.header("X-ONE"), "1");
    EXPECT_EQ(request.header("empty"), "");
    EXPECT_EQ(request.header("absent"), std::nullopt);
}

TEST(Request, TakesTheTargetApart) {
    EXPECT_EQ(requestFor("/a/b?c=d?e").path(), "/a/b");
    EXPECT_EQ(requestFor("/a/b?c=d?e").rawQuery(), "c=d?e");
    EXPECT_EQ(requestFor("/a/b").rawQuery(), "");
    using Texts = std::vector<std::string>;
    EXPECT_EQ(requestFor("/users/me").segments(), (Texts{"users", "me"}));
    EXPECT_EQ(requestFor("/tags/a%2Fb+c").segments(), (Texts{"tags", "a/b+c"}));
    EXPECT_EQ(requestFor("/users/me/").segments(), (Texts{"users", "me", ""}));
    EXPECT_EQ(requestFor("//users").segments(), (Texts{"", "users"}));
    EXPECT_EQ(requestFor("*").segments(), Texts{});
}

TEST(Request, FindsParameters) {
    const Request request = requestFor("/?a=1&b=x%3D%26y+z&a=2&flag&%63=4&d=%4g%-1%");
    EXPECT_EQ(request.parameter("a"), "1");
    EXPECT_EQ(request.parameter("b"), "x=&y z");
    EXPECT_EQ(request.parameter("flag"), "");
    EXPECT_EQ(request.parameter("c"), "4");
    EXPECT_EQ(request.parameter("d"), "%4g%-1%") << "broken escapes stay";
    EXPECT_EQ(request.parameter("e"), std::nullopt);
}

TEST(RequestRecorder, KnowsTheBodysEnd) {
    RequestRecorder recorder;
    recorder.record("POST / HTTP/1.1\r\ncontent-LENGTH: 5\r\n\r\n");
    EXPECT_EQ(recorder.mayRead(100), 5U);
    recorder.record("abc");
    EXPECT_EQ(recorder.mayRead(100), 2U);
    recorder.record("de");
    EXPECT_EQ(recorder.mayRead(100), 0U);
    EXPECT_EQ(recorder.body(), "abcde");
}

TEST(RequestRecorder, KeepsTheBeginningOfALargeBody) {
    RequestRecorder recorder;
    recorder.record("POST / HTTP/1.1\r\nContent-Length: 3000000\r\n\r\n");
    recorder.record(std::string(2000000, 'a'));
    recorder.record(std::string(1000000, 'b'));
    EXPECT_EQ(recorder.bodyBytes(), 3000000U);
    EXPECT_EQ(recorder.body(), std::string(RequestRecorder::keptBodyBytes, 'a'));
}

class RouterTest : public ::testing::Test {
protected:
    RouterTest() {
        router_.add("GET", "/users/me", [](const Call&) { return text("me"); });
        router_.add("GET", "/users/:id",
                    [](const Call& call) { return text(call.argument("id")); });
        router_.add("POST", "/users/:id/likes/:like", [](const Call& call) {
            return text(std::to_string(call.identifier("id")) + " " + call.argument("like"));
        });
        router_.add("GET", "/fails", [](const Call&) -> Answer {
            throw ServiceError(418, "short and stout", 7, "spout");
        });
        router_.add("GET", "/breaks",
                    [](const Call&) -> Answer { throw std::runtime_error("broken \xff"); });
    }

    static Answer text(const std::string& body) {
        Answer answer;
        answer.body = body;
        return answer;
    }
    Answer ask(const std::string& line) const {
        RequestBody none;
        return router_.answer(parseHead(line), none);
    }

    Router router_;
};

TEST_F(RouterTest, PrefersWhatWasAddedFirst) {
    EXPECT_EQ(ask("GET /users/me").body, "me");
    EXPECT_EQ(ask("GET /users/me?x=y").body, "me");
    EXPECT_EQ(ask("GET /users/you").body, "you");
    EXPECT_EQ(ask("GET /users/a%2Fb").body, "a/b");
    EXPECT_EQ(ask("HEAD /users/me").body, "me");
    EXPECT_EQ(ask("POST /users/12/likes/x").body, "12 x");
}

TEST_F(RouterTest, AnswersErrorsInTheEnvelope) {
    for (const char* line : {"GET /users", "GET /users/", "GET /users/me/", "GET //users/me",
                             "POST /users/-1/likes/x", "POST /users/1x/likes/x", "GET /"}) {
        EXPECT_EQ(ask(line).status, 404) << line;
        EXPECT_EQ(Json::parse(ask(line).body).at("code"), 404) << line;
    }
    EXPECT_EQ(ask("DELETE /users/me").status, 405);
    EXPECT_EQ(Json::parse(ask("DELETE /users/me").body).at("code"), 405);
    const Answer failed = ask("GET /fails");
    EXPECT_EQ(failed.status, 418);
    EXPECT_EQ(failed.contentType, "application/json");
    EXPECT_EQ(failed.body, R"({"error":"short and stout","code":7,"data":"spout"})");
    const Answer broken = ask("GET /breaks");
    EXPECT_EQ(broken.status, 500);
    EXPECT_EQ(Json::parse(broken.body).at("code"), 500);
}

TEST(Base64, ReadsWhatItWrote) {
    EXPECT_EQ(encodeBase64("f"), "Zg==");
    EXPECT_EQ(encodeBase64("fo"), "Zm8=");
    EXPECT_EQ(encodeBase64("foo"), "Zm9v");
    std::string bytes;
    for (int length = 0; length < 300; ++length) {
        EXPECT_EQ(decodeBase64(encodeBase64(bytes)), bytes);
        bytes += static_cast<char>(length * 89);
    }
    for (const char* text : {"Zg", "Zg=", "Z*==", " Zg==", "Zg==\n", "Zm9vZ"}) {
        EXPECT_FALSE(decodeBase64(text)) << text;
    }
}

} // namespace
