#include "support/RawServer.hpp"
#include "TransportTest.hpp"

#include <algorithm>

namespace KeloAPI::testing {
namespace {

/// Looks at requests as they are on the wire.
class RequestTest : public TransportTest {
protected:
    /// The request as the server read it.
    std::string wire(const URLRequest& request) {
        const auto heard = send(*transport, request);
        EXPECT_TRUE(succeeded(heard));
        return seen();
    }

    std::string seen() {
        const std::lock_guard lock(_mutex);
        return _seen;
    }

    static bool has(const std::string& text, const std::string& line) {
        return text.find("\r\n" + line + "\r\n") != std::string::npos;
    }

    std::mutex _mutex;
    std::string _seen;
    RawServer server{[this](RawConnection& connection) {
        while (true) {
            std::string request = connection.readRequest();
            if (request.empty()) {
                return;
            }
            const std::lock_guard lock(_mutex);
            _seen = std::move(request);
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        }
    }};
    std::shared_ptr<CurlTransport> transport = unpinned();
};

TEST_F(RequestTest, NothingIsSentThatNobodyAskedFor) {
    const std::string sent = wire(get(server.url("/a/b?c=d")));
    const std::string expected =
        "GET /a/b?c=d HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
        "\r\nAccept-Encoding: gzip\r\n";
    EXPECT_TRUE(sent.starts_with(expected)) << sent;
    EXPECT_EQ(std::count(sent.begin(), sent.end(), '\n'), 4) << sent;
}

TEST_F(RequestTest, FieldsAreSentAsGiven) {
    auto request = get(server.url("/"));
    request.headerFields = {{"X-Text", "a: b; c"}, {"X-Empty", ""},      {"X-Blank", "  "},
                            {"User-Agent", "me"},  {"Accept", "text/*"}, {"Accept-Language", "en"}};
    const std::string sent = wire(request);
    EXPECT_TRUE(has(sent, "X-Text: a: b; c")) << sent;
    EXPECT_TRUE(has(sent, "X-Empty:") || has(sent, "X-Empty: ")) << sent;
    EXPECT_TRUE(has(sent, "X-Blank:") || has(sent, "X-Blank: ")) << sent;
    EXPECT_TRUE(has(sent, "User-Agent: me")) << sent;
    EXPECT_TRUE(has(sent, "Accept: text/*")) << sent;
    EXPECT_TRUE(has(sent, "Accept-Language: en")) << sent;
}

TEST_F(RequestTest, EmptyStandardFieldsAreFieldsToo) {
    auto request = get(server.url("/"));
    request.headerFields = {{"User-Agent", ""}, {"Accept", ""}, {"Content-Type", ""}};
    const std::string sent = wire(request);
    for (const char* name : {"User-Agent:", "Accept:", "Content-Type:"}) {
        EXPECT_TRUE(has(sent, name) || has(sent, std::string(name) + " ")) << name << sent;
    }
}

TEST_F(RequestTest, FramingIsTheTransportsOwn) {
    auto request = with(Method::POST, server.url("/"), "12345");
    request.headerFields = {{"content-length", "3"}, {"Transfer-Encoding", "chunked"}};
    const std::string sent = wire(request);
    EXPECT_TRUE(has(sent, "Content-Length: 5")) << sent;
    EXPECT_EQ(sent.find("chunked"), std::string::npos) << sent;
}

TEST_F(RequestTest, EveryMethodUnderItsName) {
    for (const Method method : {Method::OPTIONS, Method::GET, Method::HEAD, Method::POST,
                                Method::PUT, Method::PATCH, Method::DELETE, Method::TRACE}) {
        auto request = get(server.url("/m"));
        request.method = method;
        const std::string sent = wire(request);
        EXPECT_TRUE(sent.starts_with(std::string(name(method)) + " /m HTTP/1.1\r\n")) << sent;
        const bool promises =
            method == Method::POST || method == Method::PUT || method == Method::PATCH;
        EXPECT_EQ(has(sent, "Content-Length: 0"), promises) << sent;
        EXPECT_EQ(sent.find("Content-Type"), std::string::npos) << sent;
        EXPECT_EQ(sent.find("Expect"), std::string::npos) << sent;
    }
}

TEST_F(RequestTest, BodiesOfEveryMethod) {
    for (const Method method : {Method::GET, Method::POST, Method::PUT, Method::DELETE}) {
        const std::string sent = wire(with(method, server.url("/"), "the body"));
        EXPECT_TRUE(sent.starts_with(std::string(name(method)) + " ")) << sent;
        EXPECT_TRUE(has(sent, "Content-Length: 8")) << sent;
        EXPECT_TRUE(sent.ends_with("\r\n\r\nthe body")) << sent;
        EXPECT_EQ(sent.find("Content-Type"), std::string::npos) << sent;
    }
}

TEST_F(RequestTest, AnEmptyBodyIsABody) {
    const std::string sent = wire(with(Method::DELETE, server.url("/"), ""));
    EXPECT_TRUE(has(sent, "Content-Length: 0")) << sent;
}

TEST_F(RequestTest, DotSegmentsAndDoubleSlashesStay) {
    EXPECT_TRUE(wire(get(server.url("/a/../b//./c"))).starts_with("GET /a/../b//./c HTTP"));
}

TEST_F(RequestTest, ProgressOfALargeBodyCountsEveryByteOnce) {
    std::string body(3'000'000, '\0');
    for (std::size_t i = 0; i < body.size(); ++i) {
        body[i] = static_cast<char>(i * 31 % 251);
    }
    auto observer = std::make_shared<RecordingObserver>();
    transport->start(with(Method::POST, server.url("/"), body), observer);
    ASSERT_TRUE(observer->wait());
    EXPECT_TRUE(succeeded(observer));
    EXPECT_TRUE(seen().ends_with("\r\n\r\n" + body));
    ASSERT_GT(observer->sent.size(), 1U);
    std::int64_t last = 0;
    for (const auto& [sent, total] : observer->sent) {
        EXPECT_GT(sent, last);
        EXPECT_EQ(total, 3'000'000);
        last = sent;
    }
    EXPECT_EQ(last, 3'000'000);
}

TEST_F(RequestTest, CookiesComeBackToWhoeverSetThem) {
    RawServer setting([](RawConnection& connection) {
        while (true) {
            const std::string request = connection.readRequest();
            if (request.empty()) {
                return;
            }
            const auto at = request.find("\r\nCookie: ");
            const std::string cookie =
                at == std::string::npos
                    ? "none"
                    : request.substr(at + 10, request.find('\r', at + 2) - at - 10);
            connection.write("HTTP/1.1 200 OK\r\nSet-Cookie: a=1\r\nContent-Length: " +
                             std::to_string(cookie.size()) + "\r\n\r\n" + cookie);
        }
    });
    EXPECT_EQ(send(*transport, get(setting.url("/")))->body, "none");
    EXPECT_EQ(send(*transport, get(setting.url("/")))->body, "a=1");
    auto own = get(setting.url("/"));
    own.headerFields["Cookie"] = "mine=2";
    EXPECT_EQ(send(*transport, own)->body, "mine=2");
    EXPECT_EQ(send(*unpinned(), get(setting.url("/")))->body, "none");
}

} // namespace
} // namespace KeloAPI::testing
