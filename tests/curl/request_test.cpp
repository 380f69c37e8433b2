#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <gmock/gmock.h>

#include <algorithm>

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

} // namespace
} // namespace KeloAPI::testing
