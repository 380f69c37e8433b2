#include "service/http/Request.hpp"
#include "service/http/RequestRecorder.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using KeloService::parseHead;
using KeloService::percentDecode;
using KeloService::Request;
using KeloService::RequestRecorder;

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
    const Request request = requestFor("/?a=1&b=x%3D%26y+z&a=2&flag&%63=4");
    EXPECT_EQ(request.parameter("a"), "1");
    EXPECT_EQ(request.parameter("b"), "x=&y z");
    EXPECT_EQ(request.parameter("flag"), "");
    EXPECT_EQ(request.parameter("c"), "4");
    EXPECT_EQ(request.parameter("d"), std::nullopt);
}

TEST(Request, LeavesBrokenEscapesAlone) {
    EXPECT_EQ(percentDecode("%", false), "%");
    EXPECT_EQ(percentDecode("%4", false), "%4");
    EXPECT_EQ(percentDecode("%4g%-1%41", false), "%4g%-1A");
}

TEST(RequestRecorder, KnowsTheBodysEnd) {
    RequestRecorder recorder;
    recorder.startRequest();
    recorder.record("POST / HTTP/1.1\r\ncontent-LENGTH: 5\r\n\r\n");
    EXPECT_TRUE(recorder.headIsComplete());
    EXPECT_EQ(recorder.mayRead(100), 5U);
    recorder.record("abc");
    EXPECT_EQ(recorder.mayRead(100), 2U);
    recorder.record("de");
    EXPECT_EQ(recorder.mayRead(100), 0U);
    EXPECT_EQ(recorder.body(), "abcde");
}

TEST(RequestRecorder, GivesNoBodyToARequestThatAnnouncesNone) {
    RequestRecorder recorder;
    recorder.record("POST / HTTP/1.1\r\n\r\n");
    EXPECT_EQ(recorder.mayRead(100), 0U);
}

TEST(RequestRecorder, KeepsTheBeginningOfALargeBody) {
    RequestRecorder recorder;
    recorder.record("POST / HTTP/1.1\r\nContent-Length: 3000000\r\n\r\n");
    recorder.record(std::string(2000000, 'a'));
    recorder.record(std::string(1000000, 'b'));
    EXPECT_EQ(recorder.bodyBytes(), 3000000U);
    EXPECT_EQ(recorder.body(), std::string(RequestRecorder::keptBodyBytes, 'a'));
}

} // namespace
