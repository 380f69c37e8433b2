#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/Redirect.hpp>

#include <gmock/gmock.h>

#include <algorithm>
#include <mutex>

namespace KeloAPI::testing {
namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/// A field as it is on the wire.
::testing::Matcher<const std::string&> hasField(const std::string& name, const std::string& value) {
    const std::string start = "\r\n" + name + ":";
    if (value.empty()) {
        return AnyOf(HasSubstr(start + "\r\n"), HasSubstr(start + " \r\n"));
    }
    return HasSubstr(start + " " + value + "\r\n");
}

/// Looks at requests as they are on the wire.
class RequestOnTheWire : public TransportTest {
protected:
    /// The request as the server read it.
    std::string wire(const URLRequest& request) {
        EXPECT_TRUE(succeeded(send(*transport, request)));
        return server.received().back();
    }

    RawServer server{answeringAll(okResponse(""))};
    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(RequestOnTheWire, NothingIsSentThatNobodyAskedFor) {
    const std::string sent = wire(get(server.url("/a/b?c=d")));
    EXPECT_THAT(sent, StartsWith("GET /a/b?c=d HTTP/1.1\r\nHost: 127.0.0.1:" +
                                 std::to_string(server.port()) + "\r\nAccept-Encoding: gzip\r\n"));
    EXPECT_EQ(std::count(sent.begin(), sent.end(), '\n'), 4) << sent;
    EXPECT_THAT(wire(get(server.url("/a/../b//./c"))), StartsWith("GET /a/../b//./c HTTP"));
}

TEST_F(RequestOnTheWire, FieldsAreSentAsGiven) {
    auto request = get(server.url("/"));
    for (const HeaderFields& fields :
         {HeaderFields{{"X-Text", "a: b; c"},
                       {"X-Empty", ""},
                       {"User-Agent", "me"},
                       {"Accept", "text/*"},
                       {"Accept-Language", "en"}},
          HeaderFields{{"User-Agent", ""}, {"Accept", ""}, {"Content-Type", ""}}}) {
        request.headerFields = fields;
        const std::string sent = wire(request);
        for (const auto& [name, value] : fields) {
            EXPECT_THAT(sent, hasField(name, value));
        }
    }
    request.headerFields = {{"X-Blank", "  "}};
    EXPECT_THAT(wire(request), hasField("X-Blank", ""));
}

TEST_F(RequestOnTheWire, FramingIsTheTransportsOwn) {
    auto request = with(Method::POST, server.url("/"), "12345");
    request.headerFields = {{"content-length", "3"}, {"Transfer-Encoding", "chunked"}};
    const std::string sent = wire(request);
    EXPECT_THAT(sent, hasField("Content-Length", "5"));
    EXPECT_THAT(sent, Not(HasSubstr("chunked")));
}

TEST_F(RequestOnTheWire, EveryMethodUnderItsNameWithAndWithoutABody) {
    for (const Method method : {Method::OPTIONS, Method::GET, Method::HEAD, Method::POST,
                                Method::PUT, Method::PATCH, Method::DELETE, Method::TRACE}) {
        auto request = get(server.url("/m"));
        request.method = method;
        const std::string start = std::string(name(method)) + " /m HTTP/1.1\r\n";
        const std::string sent = wire(request);
        EXPECT_THAT(sent, StartsWith(start));
        const bool promises =
            method == Method::POST || method == Method::PUT || method == Method::PATCH;
        EXPECT_EQ(sent.find("\r\nContent-Length: 0\r\n") != std::string::npos, promises) << sent;
        EXPECT_THAT(sent, Not(AnyOf(HasSubstr("Content-Type"), HasSubstr("Expect"))));
        if (method == Method::HEAD || method == Method::OPTIONS || method == Method::TRACE) {
            continue;
        }
        request.body = Data(std::string("the body"));
        EXPECT_THAT(wire(request),
                    AllOf(StartsWith(start), hasField("Content-Length", "8"),
                          EndsWith("\r\n\r\nthe body"), Not(HasSubstr("Content-Type"))));
    }
    EXPECT_THAT(wire(with(Method::DELETE, server.url("/"), "")), hasField("Content-Length", "0"))
        << "an empty body is a body";
}

TEST_F(RequestOnTheWire, CookiesOfAHostThatARequestNamesReachNoOther) {
    const auto sayingCookies = [](RawConnection& connection) {
        connection.serve([](const std::string& request) {
            const bool has = request.find("\r\nCookie: ") != std::string::npos;
            const std::string body = has ? "cookie" : "none";
            return "HTTP/1.1 200 OK\r\nSet-Cookie: secret=1\r\nContent-Length: " +
                   std::to_string(body.size()) + "\r\n\r\n" + body;
        });
    };
    RawServer first(sayingCookies);
    RawServer second(sayingCookies);
    auto named = get(first.url("/"));
    named.headerFields["Host"] = "a.example";
    EXPECT_EQ(send(*transport, named)->body, "none");
    EXPECT_EQ(send(*transport, get(second.url("/")))->body, "none");
    EXPECT_EQ(send(*transport, get(second.url("/")))->body, "cookie") << "its own";
}

TEST_F(RequestOnTheWire, CookiesComeBackToWhoeverSetThem) {
    RawServer setting([](RawConnection& connection) {
        connection.serve([](const std::string& request) {
            const auto at = request.find("\r\nCookie: ");
            const std::string cookie = at == std::string::npos ? "none" : request.substr(at + 10);
            const std::string body = cookie.substr(0, cookie.find('\r'));
            return "HTTP/1.1 200 OK\r\nSet-Cookie: a=1\r\nContent-Length: " +
                   std::to_string(body.size()) + "\r\n\r\n" + body;
        });
    });
    auto request = get(setting.url("/"));
    EXPECT_EQ(send(*transport, request)->body, "none");
    EXPECT_EQ(send(*transport, request)->body, "a=1");
    EXPECT_EQ(send(*unpinned(), request)->body, "none");
    request.headerFields["Cookie"] = "mine=2";
    EXPECT_EQ(send(*transport, request)->body, "mine=2");
}

// The rule by itself

URLRequest original(Method method) {
    URLRequest request;
    request.url = URL::parse("https://api.example/a/b?c=d");
    request.method = method;
    request.body = Data(std::string("body"));
    request.headerFields = {{"Content-Type", "text/plain"}, {"content-md5", "x"}, {"X-Key", "k"}};
    return request;
}

TEST(RedirectTest, MethodAndBody) {
    struct Rule {
        int status;
        Method before;
        Method after;
        bool keepsBody;
    };
    const std::vector<Rule> rules = {
        {301, Method::POST, Method::GET, false},   {302, Method::POST, Method::GET, false},
        {303, Method::POST, Method::GET, false},   {303, Method::PUT, Method::GET, false},
        {303, Method::DELETE, Method::GET, false}, {303, Method::HEAD, Method::HEAD, true},
        {301, Method::PUT, Method::PUT, true},     {302, Method::DELETE, Method::DELETE, true},
        {301, Method::GET, Method::GET, true},     {307, Method::POST, Method::POST, true},
        {308, Method::POST, Method::POST, true},   {308, Method::PATCH, Method::PATCH, true},
    };
    for (const Rule& rule : rules) {
        SCOPED_TRACE(::testing::Message() << rule.status << ' ' << name(rule.before));
        const auto next = redirected(original(rule.before), rule.status, {{"Location", "/x"}});
        ASSERT_TRUE(next);
        EXPECT_EQ(next.value().url->absoluteString(), "https://api.example/x");
        EXPECT_EQ(next.value().method, rule.after);
        EXPECT_EQ(next.value().body.has_value(), rule.keepsBody);
        EXPECT_EQ(next.value().headerFields.contains("Content-Type"), rule.keepsBody);
        EXPECT_EQ(next.value().headerFields.contains("Content-MD5"), rule.keepsBody);
        EXPECT_TRUE(next.value().headerFields.contains("X-Key"));
    }
}

TEST(RedirectTest, OnlyRedirectsWithAPlaceToGoAreFollowed) {
    for (const int status : {301, 302, 303, 307, 308}) {
        EXPECT_TRUE(isRedirect(status, {{"location", "/"}})) << status;
        EXPECT_FALSE(isRedirect(status, {})) << status;
        EXPECT_FALSE(isRedirect(status, {{"Location", ""}})) << status;
    }
    for (const int status : {200, 201, 300, 304, 305, 306, 404}) {
        EXPECT_FALSE(isRedirect(status, {{"Location", "/"}})) << status;
    }
}

TEST(RedirectTest, FieldsBoundToTheOriginStayWithinIt) {
    URLRequest request = original(Method::GET);
    request.headerFields = {{"X-Session", "s"},
                            {"Authorization", "a"},
                            {"Cookie", "c"},
                            {"Host", "h"},
                            {"Accept", "*/*"}};
    request.originBoundFields = {"x-session"};
    const auto fieldsAt = [&](const std::string& location) {
        return redirected(request, 302, {{"Location", location}}).value().headerFields;
    };
    EXPECT_EQ(fieldsAt("/x"), request.headerFields);
    EXPECT_EQ(fieldsAt("https://API.example:443/x"), request.headerFields);
    const HeaderFields rest = {{"Accept", "*/*"}};
    EXPECT_EQ(fieldsAt("https://other.example/x"), rest);
    EXPECT_EQ(fieldsAt("https://api.example:444/x"), rest);
    EXPECT_EQ(fieldsAt("//other.example/x"), rest);
}

TEST(RedirectTest, SomeWaysAreNotTaken) {
    const auto failure = [](Method method, int status, const char* location) {
        const auto next = redirected(original(method), status, {{"Location", location}});
        return next ? std::nullopt : std::optional(next.error());
    };
    for (const char* location : {"ftp://api.example/", "file:///etc/passwd", "http://", "a b",
                                 "https://[::1/", "javascript:alert(1)"}) {
        const auto error = failure(Method::GET, 302, location);
        EXPECT_TRUE(error && isHTTPError(*error, HTTPErrorCode::UnsupportedURL)) << location;
    }
    // Out of TLS.
    for (const char* location :
         {"http://api.example/x", "HTTP://api.example:443/a/b", "http://other.example/"}) {
        for (const int status : {301, 303, 307}) {
            const auto error = failure(Method::POST, status, location);
            EXPECT_TRUE(error && isHTTPError(*error, HTTPErrorCode::ServerTrust)) << location;
        }
    }
    URLRequest plain = original(Method::GET);
    plain.url = URL::parse("http://api.example/");
    for (const char* location : {"https://api.example/", "http://other.example/", "/x"}) {
        EXPECT_TRUE(redirected(plain, 302, {{"Location", location}})) << location;
    }
}

// The rule at work

class RedirectTransportTest : public TransportTest {
protected:
    /// Answers /N with a redirect of status N to `target`, everything else with "ok".
    void answer(RawConnection& connection) {
        connection.serve([this](const std::string& request) {
            const std::lock_guard lock(_mutex);
            const std::string status = pathOf(request).substr(1);
            return status.starts_with('3')
                       ? "HTTP/1.1 " + status + " Moved\r\nLocation: " + _target +
                             "\r\nContent-Length: 4\r\n\r\nover"
                       : okResponse();
        });
    }

    void redirectTo(const std::string& target) {
        const std::lock_guard lock(_mutex);
        _target = target;
    }

    /// A request with a body that is sent on; the message that comes of it.
    std::string redirectedMessage(Method method, const char* path) {
        auto request = with(method, server.url(path), "payload");
        request.headerFields["Content-Type"] = "text/plain";
        heard = send(*transport, request);
        EXPECT_TRUE(succeeded(heard));
        return server.received().back();
    }

private:
    std::mutex _mutex;
    std::string _target = "/end";

protected:
    RawServer server{[this](RawConnection& connection) { answer(connection); }};
    std::shared_ptr<CurlTransport> transport = unpinned();
    Observer heard;
};

TEST_F(RedirectTransportTest, OnlyTheFinalResponseIsHeard) {
    heard = send(*transport, get(server.url("/302")));
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "ok");
    EXPECT_EQ(heard->responses.front().url.absoluteString(), server.url("/end"));
    EXPECT_EQ(server.requests(), 2);
    EXPECT_EQ(server.connections(), 1) << "the redirect's body was read, its connection kept";
}

TEST_F(RedirectTransportTest, A307SendsTheBodyAgainAndA303AsksWithoutIt) {
    const std::string again = redirectedMessage(Method::POST, "/307");
    EXPECT_TRUE(again.starts_with("POST /end HTTP/1.1\r\n")) << again;
    EXPECT_TRUE(again.ends_with("\r\n\r\npayload")) << again;
    EXPECT_NE(again.find("Content-Type: text/plain"), std::string::npos);
    EXPECT_TRUE(server.received().front().ends_with("\r\n\r\npayload"));
    const std::vector<std::pair<std::int64_t, std::int64_t>> twice = {{7, 7}, {7, 7}};
    EXPECT_EQ(heard->sent, twice);
    const std::string without = redirectedMessage(Method::PUT, "/303");
    EXPECT_TRUE(without.starts_with("GET /end HTTP/1.1\r\n")) << without;
    EXPECT_EQ(without.find("Content-"), std::string::npos) << without;
    EXPECT_EQ(server.requests(), 4);
}

TEST_F(RedirectTransportTest, AnEndlessLoopAndAWayOutOfHTTPAreErrors) {
    const auto expectFailure = [this](const std::string& target, HTTPErrorCode code) {
        redirectTo(target);
        heard = send(*transport, get(server.url("/302")));
        EXPECT_TRUE(failedWith(heard, code)) << target;
        EXPECT_TRUE(heard->responses.empty()) << target;
    };
    expectFailure("/302", HTTPErrorCode::TooManyRedirects);
    EXPECT_EQ(server.requests(), 21);
    expectFailure("file:///etc/passwd", HTTPErrorCode::UnsupportedURL);
}

TEST_F(RedirectTransportTest, ASessionFieldGoesToNoOtherOrigin) {
    RawServer other([this](RawConnection& connection) { answer(connection); });
    auto request = get(server.url("/302"));
    request.headerFields = {{"X-Session", "secret"}, {"X-Plain", "p"}};
    request.originBoundFields = {"X-Session"};
    EXPECT_TRUE(succeeded(send(*transport, request)));
    EXPECT_NE(server.received().back().find("X-Session: secret"), std::string::npos);
    redirectTo(other.url("/end"));
    EXPECT_TRUE(succeeded(send(*transport, request)));
    EXPECT_EQ(server.requests(), 3);
    ASSERT_EQ(other.requests(), 1);
    const std::string elsewhere = other.received().back();
    EXPECT_EQ(elsewhere.find("secret"), std::string::npos) << elsewhere;
    EXPECT_NE(elsewhere.find("X-Plain: p"), std::string::npos);
}

TEST_F(RedirectTransportTest, ARedirectWithoutLocationIsAResponse) {
    RawServer bare(answeringOnce("HTTP/1.1 302 Found\r\nContent-Length: 4\r\n\r\nhere"));
    heard = send(*transport, get(bare.url("/")));
    EXPECT_TRUE(succeeded(heard, 302));
    EXPECT_EQ(heard->body, "here");
}

TEST_F(RedirectTransportTest, AnEndlessRedirectBodyIsNotReadToItsEnd) {
    RawServer endless([this](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 302 Found\r\nLocation: " + server.url("/end") + "\r\n\r\n");
        while (connection.write(std::string(16384, 'x'))) {
        }
    });
    EXPECT_TRUE(succeeded(send(*transport, get(endless.url("/")))));
}

} // namespace
} // namespace KeloAPI::testing
