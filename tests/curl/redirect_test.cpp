#include "support/RawServer.hpp"
#include "support/TestServer.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/curl/internal/Redirect.hpp>

namespace KeloAPI::testing {
namespace {

// The rule by itself

URLRequest original(Method method) {
    URLRequest request;
    request.url = URL::parse("https://api.example/a/b?c=d");
    request.method = method;
    request.body = Data(std::string("body"));
    request.headerFields = {{"Content-Type", "text/plain"}, {"content-md5", "x"}, {"X-Key", "k"}};
    return request;
}

struct MethodRule {
    int status;
    Method before;
    Method after;
    bool keepsBody;
};

class RedirectRuleTest : public ::testing::TestWithParam<MethodRule> {};

TEST_P(RedirectRuleTest, MethodAndBody) {
    const MethodRule& rule = GetParam();
    const auto next = redirected(original(rule.before), rule.status, {{"Location", "/x"}});
    ASSERT_TRUE(next);
    EXPECT_EQ(next.value().url->absoluteString(), "https://api.example/x");
    EXPECT_EQ(next.value().method, rule.after);
    EXPECT_EQ(next.value().body.has_value(), rule.keepsBody);
    EXPECT_EQ(next.value().headerFields.contains("Content-Type"), rule.keepsBody);
    EXPECT_EQ(next.value().headerFields.contains("Content-MD5"), rule.keepsBody);
    EXPECT_TRUE(next.value().headerFields.contains("X-Key"));
}

INSTANTIATE_TEST_SUITE_P(All, RedirectRuleTest,
                         ::testing::Values(MethodRule{301, Method::POST, Method::GET, false},
                                           MethodRule{302, Method::POST, Method::GET, false},
                                           MethodRule{303, Method::POST, Method::GET, false},
                                           MethodRule{303, Method::PUT, Method::GET, false},
                                           MethodRule{303, Method::DELETE, Method::GET, false},
                                           MethodRule{303, Method::HEAD, Method::HEAD, true},
                                           MethodRule{301, Method::PUT, Method::PUT, true},
                                           MethodRule{302, Method::DELETE, Method::DELETE, true},
                                           MethodRule{301, Method::GET, Method::GET, true},
                                           MethodRule{307, Method::POST, Method::POST, true},
                                           MethodRule{308, Method::POST, Method::POST, true},
                                           MethodRule{308, Method::PATCH, Method::PATCH, true}));

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

TEST(RedirectTest, AWayToNoHTTPURLIsAnError) {
    for (const char* location : {"ftp://api.example/", "file:///etc/passwd", "http://", "a b",
                                 "https://[::1/", "javascript:alert(1)"}) {
        const auto next = redirected(original(Method::GET), 302, {{"Location", location}});
        ASSERT_FALSE(next) << location;
        EXPECT_TRUE(isHTTPError(next.error(), HTTPErrorCode::UnsupportedURL)) << location;
    }
}

TEST(RedirectTest, NoWayLeadsOutOfTLS) {
    for (const char* location :
         {"http://api.example/x", "HTTP://api.example:443/a/b", "http://other.example/"}) {
        for (const int status : {301, 303, 307}) {
            const auto next = redirected(original(Method::POST), status, {{"Location", location}});
            ASSERT_FALSE(next) << location;
            EXPECT_TRUE(isHTTPError(next.error(), HTTPErrorCode::ServerTrust)) << location;
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
    /// Answers /N with a redirect of status N to `target`, everything else with what it was sent.
    void answer(RawConnection& connection) {
        while (true) {
            const std::string request = connection.readRequest();
            if (request.empty()) {
                return;
            }
            const std::lock_guard lock(_mutex);
            _seen.push_back(request);
            const auto slash = request.find(' ') + 1;
            const int status =
                static_cast<int>(std::strtol(request.c_str() + slash + 1, nullptr, 10));
            if (status != 0) {
                connection.write("HTTP/1.1 " + std::to_string(status) + " Moved\r\nLocation: " +
                                 _target + "\r\nContent-Length: 4\r\n\r\nover");
            } else {
                connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
            }
        }
    }

    void redirectTo(const std::string& target) {
        const std::lock_guard lock(_mutex);
        _target = target;
    }

    /// The requests so far.
    std::vector<std::string> messages() {
        const std::lock_guard lock(_mutex);
        return _seen;
    }

private:
    std::mutex _mutex;
    std::vector<std::string> _seen;
    std::string _target = "/end";

protected:
    RawServer server{[this](RawConnection& connection) { answer(connection); }};
    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(RedirectTransportTest, OnlyTheFinalAnswerIsHeard) {
    const auto heard = send(*transport, get(server.url("/302")));
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "ok");
    EXPECT_EQ(heard->responses.front().url.absoluteString(), server.url("/end"));
    EXPECT_EQ(messages().size(), 2U);
    EXPECT_EQ(server.connections(), 1) << "the redirect's body was read, its connection kept";
}

TEST_F(RedirectTransportTest, A307SendsTheBodyAgain) {
    auto request = with(Method::POST, server.url("/307"), "payload");
    request.headerFields["Content-Type"] = "text/plain";
    const auto heard = send(*transport, request);
    EXPECT_TRUE(succeeded(heard));
    const auto seen = messages();
    ASSERT_EQ(seen.size(), 2U);
    for (const std::string& message : seen) {
        EXPECT_TRUE(message.starts_with("POST /")) << message;
        EXPECT_TRUE(message.ends_with("\r\n\r\npayload")) << message;
        EXPECT_NE(message.find("Content-Type: text/plain"), std::string::npos);
    }
    const std::vector<std::pair<std::int64_t, std::int64_t>> twice = {{7, 7}, {7, 7}};
    EXPECT_EQ(heard->sent, twice);
}

TEST_F(RedirectTransportTest, A303AsksWithGetAndWithoutTheBody) {
    auto request = with(Method::PUT, server.url("/303"), "payload");
    request.headerFields["Content-Type"] = "text/plain";
    EXPECT_TRUE(succeeded(send(*transport, request)));
    const auto seen = messages();
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_TRUE(seen[1].starts_with("GET /end HTTP/1.1\r\n")) << seen[1];
    EXPECT_EQ(seen[1].find("Content-"), std::string::npos) << seen[1];
}

TEST_F(RedirectTransportTest, ALoopEndsAfterTwentyRedirects) {
    redirectTo("/302");
    const auto heard = send(*transport, get(server.url("/302")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::TooManyRedirects));
    EXPECT_TRUE(heard->responses.empty());
    EXPECT_EQ(messages().size(), 21U);
}

TEST_F(RedirectTransportTest, ASessionFieldGoesToNoOtherOrigin) {
    RawServer other([this](RawConnection& connection) { answer(connection); });
    auto request = get(server.url("/302"));
    request.headerFields = {{"X-Session", "secret"}, {"X-Plain", "p"}};
    request.originBoundFields = {"X-Session"};
    EXPECT_TRUE(succeeded(send(*transport, request)));
    redirectTo(other.url("/end"));
    EXPECT_TRUE(succeeded(send(*transport, request)));
    const auto seen = messages();
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_NE(seen[1].find("X-Session: secret"), std::string::npos);
    EXPECT_EQ(seen[3].find("secret"), std::string::npos) << seen[3];
    EXPECT_NE(seen[3].find("X-Plain: p"), std::string::npos);
}

TEST_F(RedirectTransportTest, AWayOutOfHTTPIsAnError) {
    redirectTo("file:///etc/passwd");
    const auto heard = send(*transport, get(server.url("/302")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::UnsupportedURL));
    EXPECT_TRUE(heard->responses.empty());
}

TEST_F(RedirectTransportTest, ARedirectWithoutLocationIsAnAnswer) {
    RawServer bare([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 302 Found\r\nContent-Length: 4\r\n\r\nhere");
    });
    const auto heard = send(*transport, get(bare.url("/")));
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
