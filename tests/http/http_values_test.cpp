#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/Method.hpp>
#include <KeloAPI/http/Timeline.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

using namespace std::chrono_literals;

TEST(MethodTest, HasItsNameOnTheWire) {
    using enum Method;
    std::string names;
    for (const Method method : {OPTIONS, GET, HEAD, POST, PUT, PATCH, DELETE, TRACE, CONNECT}) {
        names += std::string(name(method)) + ' ';
    }
    EXPECT_EQ(names, "OPTIONS GET HEAD POST PUT PATCH DELETE TRACE CONNECT ");
}

TEST(HeaderFieldsTest, NamesAreComparedWithoutCase) {
    HeaderFields fields = {{"Content-Type", "a"}};
    fields.insert_or_assign("content-TYPE", "b");
    EXPECT_EQ(fields.size(), 1U);
    EXPECT_EQ(fields.at("CONTENT-type"), "b");
    EXPECT_EQ(fields.find(std::string_view("Content-Typ")), fields.end());
    fields.emplace("Content-Type2", "");
    EXPECT_EQ(fields.at("content-type2"), "") << "an empty text is a value";
    const HeaderNameLess less;
    EXPECT_FALSE(less("ab", "AB"));
    EXPECT_TRUE(less("a", "B"));
    EXPECT_TRUE(less("A", "b"));
    EXPECT_FALSE(less("\xC4", "\xE4") && less("\xE4", "\xC4"));
    EXPECT_TRUE(less("\xC4", "\xE4") || less("\xE4", "\xC4")) << "only ASCII has case";
}

TEST(URLRequestTest, HasTheDefaultsOfAPlainGet) {
    const URLRequest request;
    EXPECT_EQ(request.method, Method::GET);
    EXPECT_FALSE(request.url);
    EXPECT_FALSE(request.body);
    EXPECT_TRUE(request.headerFields.empty());
    EXPECT_EQ(request.timeoutInterval, 60s);
}

TEST(URLRequestTest, DescribesMethodAndURLAndNeverAHeader) {
    URLRequest request;
    EXPECT_EQ(request.description(), "GET nil");
    request.url = URL::parse("https://h/a?b=c");
    request.method = Method::POST;
    request.headerFields.emplace("kelo-session-id", "secret");
    request.body = Data("secret");
    EXPECT_EQ(request.description(), "POST https://h/a?b=c");
}

TEST(URLRequestTest, HasNoProblemWithHTTPAndAnyFieldThatFitsIntoAHead) {
    URLRequest request;
    request.headerFields = {{"X-Good.1_~!#$%&'*+^`|", "a value: \"\t\xC3\xA4\""}, {"Empty", ""}};
    for (const char* text : {"http://h", "HTTPS://h:1/x?y#z", "https://[::1]/"}) {
        request.url = URL::parse(text);
        EXPECT_FALSE(request.problem()) << text;
    }
}

TEST(TimelineTest, HasTheDurationsBetweenItsInstants) {
    const Timeline timeline{Date(1s), Date(3s), Date(6s), Date(10s)};
    EXPECT_EQ(timeline.latency(), 2s);
    EXPECT_EQ(timeline.requestDuration(), 5s);
    EXPECT_EQ(timeline.serializationDuration(), 4s);
    EXPECT_EQ(timeline.totalDuration(), 9s);
}

} // namespace KeloAPI::testing
