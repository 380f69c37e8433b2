#include "support/JsonText.hpp"

#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/Method.hpp>
#include <KeloAPI/http/ParameterEncoding.hpp>
#include <KeloAPI/http/Timeline.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

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

namespace {

URLRequest requestTo(std::string_view url) {
    URLRequest request;
    request.url = URL::parse(url);
    return request;
}

/// The body that JSON encoding gives one value under the key "v", without the object around it.
std::optional<std::string> jsonOf(ParameterValue value) {
    URLRequest request = requestTo("https://h/");
    Parameters parameters;
    parameters.emplace("v", std::move(value));
    if (ParameterEncoding::JSON.encode(request, parameters)) {
        EXPECT_FALSE(request.body);
        return std::nullopt;
    }
    const std::string body(request.body->text());
    EXPECT_EQ(body.substr(0, 5), "{\"v\":");
    EXPECT_TRUE(JsonDocument::parse(body)) << body;
    return body.substr(5, body.size() - 6);
}

} // namespace

TEST(QueryStringTest, WritesEveryKindOfValue) {
    const std::pair<Parameters, const char*> table[] = {
        {{}, ""},
        {{{"a", "b"}}, "a=b"},
        {{{"b", 1}, {"a", 2}, {"C", 3}}, "C=3&a=2&b=1"},
        {{{"a", ""}}, "a="},
        {{{"", "x"}}, "=x"},
        {{{"t", true}, {"f", false}}, "f=0&t=1"},
        {{{"n", nullptr}}, "n=%3Cnull%3E"},
        {{{"i", -5}, {"u", UINT64_MAX}, {"m", INT64_MIN}},
         "i=-5&m=-9223372036854775808&u=18446744073709551615"},
        {{{"d", 1.5}, {"e", 1.0}, {"x", 1e300}}, "d=1.5&e=1&x=1e%2B300"},
        {{{"l", ParameterList{1, "b", true}}}, "l%5B%5D=1&l%5B%5D=b&l%5B%5D=1"},
        {{{"l", ParameterList{}}, {"m", Parameters{}}}, ""},
        {{{"m", Parameters{{"y", 2}, {"x", 1}}}}, "m%5Bx%5D=1&m%5By%5D=2"},
        {{{"m", Parameters{{"l", ParameterList{1, ParameterList{2}}}}}},
         "m%5Bl%5D%5B%5D=1&m%5Bl%5D%5B%5D%5B%5D=2"},
        {{{"l", ParameterList{Parameters{{"a", 1}}}}}, "l%5B%5D%5Ba%5D=1"},
        {{{"k&=", "v&=+ ?#/\xC3\xA4"}}, "k%26%3D=v%26%3D%2B%20%3F%23%2F%C3%A4"},
        {{{"a-._~z", "-._~"}}, "a-._~z=-._~"},
        {{{"bad", "\xFF"}}, "bad=%FF"},
    };
    for (const auto& [parameters, expected] : table) {
        EXPECT_EQ(queryString(parameters), expected);
    }
}

TEST(URLEncodingTest, PutsTheQueryIntoTheURLForEveryMethod) {
    const std::tuple<const char*, Parameters, const char*> table[] = {
        {"https://h/a", {{"b", 1}}, "https://h/a?b=1"},
        {"https://h/a?x=%20y", {{"b", "c"}}, "https://h/a?x=%20y&b=c"},
        {"https://h/a", {}, "https://h/a"},
        {"https://h/a?", {}, "https://h/a?"},
        {"https://h/a?x=y", {}, "https://h/a?x=y"},
        {"", {{"a", 1}}, ""},
    };
    for (const auto& [url, parameters, expected] : table) {
        for (const Method method : {Method::GET, Method::HEAD, Method::POST, Method::PUT,
                                    Method::PATCH, Method::DELETE}) {
            URLRequest request = requestTo(url);
            request.method = method;
            EXPECT_FALSE(ParameterEncoding::URL.encode(request, parameters));
            EXPECT_EQ(request.url, URL::parse(expected));
            EXPECT_FALSE(request.body);
            EXPECT_TRUE(request.headerFields.empty());
        }
    }
}

TEST(JSONEncodingTest, WritesTheBodyAndItsTypeUnlessOneIsSet) {
    URLRequest request = requestTo("https://h/a?x=y");
    EXPECT_FALSE(ParameterEncoding::JSON.encode(
        request, {{"b", ParameterList{1, nullptr, Parameters{{"c", "d"}}}}, {"a", true}}));
    EXPECT_EQ(request.body->text(), R"({"a":true,"b":[1,null,{"c":"d"}]})");
    EXPECT_EQ(request.headerFields.at("Content-Type"), "application/json");
    EXPECT_EQ(request.url, URL::parse("https://h/a?x=y"));

    request.headerFields = {{"content-type", "application/vnd.x+json"}};
    EXPECT_FALSE(ParameterEncoding::JSON.encode(request, {}));
    EXPECT_EQ(request.headerFields.size(), 1U);
    EXPECT_EQ(request.headerFields.at("Content-Type"), "application/vnd.x+json");
    EXPECT_EQ(request.body->text(), "{}");
}

TEST(JSONEncodingTest, WritesEveryKindOfValue) {
    const std::pair<ParameterValue, std::string> table[] = {
        {nullptr, "null"},
        {true, "true"},
        {false, "false"},
        {INT64_MIN, "-9223372036854775808"},
        {UINT64_MAX, "18446744073709551615"},
        {1.5, "1.5"},
        {1.0, "1"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {1e19, "1e+19"}, // as plain digits it would be an integer beyond 64 bits
        {ParameterList{}, "[]"},
        {Parameters{}, "{}"},
        {ParameterList{ParameterList{1}, 2}, "[[1],2]"},
        {"", "\"\""},
        {"a\"b\\c/d", R"("a\"b\\c/d")"},
        {"\b\f\n\r\t\x1f\x7f", "\"\\u0008\\u000c\\u000a\\u000d\\u0009\\u001f\x7f\""},
        {std::string("a\0b", 3), R"("a\u0000b")"},
        {"\xC3\xA4\xF0\x9F\x98\x80\xE2\x80\xA8", "\"\xC3\xA4\xF0\x9F\x98\x80\xE2\x80\xA8\""},
    };
    for (const auto& [value, expected] : table) {
        EXPECT_EQ(jsonOf(value), expected);
    }
}

TEST(JSONEncodingTest, DoublesRoundTrip) {
    double value = 1.0 / 3;
    for (int i = 0; i < 200; ++i) {
        const JsonText text(jsonOf(value).value());
        EXPECT_EQ(text.root().real(), value);
        value *= -17.9;
    }
}

TEST(JSONEncodingTest, RefusesWhatHasNoJSONForm) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const ParameterValue table[] = {infinity,
                                    -infinity,
                                    std::numeric_limits<double>::quiet_NaN(),
                                    "\xFF",
                                    "\xED\xA0\x80",
                                    ParameterList{1, ParameterList{infinity}},
                                    Parameters{{"\xC0\x80", 1}}};
    for (const ParameterValue& value : table) {
        EXPECT_EQ(jsonOf(value), std::nullopt);
    }
    URLRequest request = requestTo("https://h/");
    const auto error = ParameterEncoding::JSON.encode(request, {{"v", infinity}});
    ASSERT_TRUE(error);
    EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::ParameterEncoding));
    EXPECT_TRUE(request.headerFields.empty());
}

TEST(ParameterEncodingTest, MayBeTheCallersOwn) {
    constexpr ParameterEncoding own([](URLRequest& request, const Parameters& parameters) {
        request.headerFields.emplace("X-Count", std::to_string(parameters.size()));
        return std::optional<Error>();
    });
    URLRequest request = requestTo("https://h/");
    EXPECT_FALSE(own.encode(request, {{"a", 1}, {"b", 2}}));
    EXPECT_EQ(request.headerFields.at("X-Count"), "2");
    EXPECT_EQ(ParameterEncoding::URL, ParameterEncoding::URL);
    EXPECT_NE(ParameterEncoding::URL, ParameterEncoding::JSON);
    EXPECT_NE(own, ParameterEncoding::URL);
}

} // namespace KeloAPI::testing
