#include "support/Loopback.hpp"
#include "TrustTest.hpp"

#include <poll.h>
#include <unistd.h>

#include <array>

namespace KeloAPI::testing {
namespace {

/// Carries bytes both ways until one side closes.
void carry(int a, int b) {
    std::array<pollfd, 2> ends = {pollfd{a, POLLIN, 0}, pollfd{b, POLLIN, 0}};
    std::array<char, 16384> buffer{};
    while (::poll(ends.data(), ends.size(), -1) > 0) {
        for (std::size_t from = 0; from < 2; ++from) {
            if (ends.at(from).revents == 0) {
                continue;
            }
            const auto size = ::recv(ends.at(from).fd, buffer.data(), buffer.size(), 0);
            if (size <= 0 || ::send(ends.at(1 - from).fd, buffer.data(),
                                    static_cast<std::size_t>(size), MSG_NOSIGNAL) != size) {
                return;
            }
        }
    }
}

class ProxyTest : public TrustTest {
protected:
    void TearDown() override {
        unsetenv("http_proxy");
        unsetenv("https_proxy");
        TrustTest::TearDown();
    }

    void serveBehindProxy() {
        serve(leaf);
        setenv("https_proxy", proxy.url("").c_str(), 1);
    }

    /// Serves CONNECT by a way to the server, and everything else itself.
    void serveProxy(RawConnection& connection) {
        const std::string request = connection.readRequest();
        if (!request.starts_with("CONNECT ")) {
            connection.write(okResponse("by proxy!"));
            return;
        }
        const sockaddr_in address = loopbackAddress(server->port());
        const int way = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(way, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            connection.write("HTTP/1.1 200 Connected\r\nX-Proxy: yes\r\n\r\n");
            carry(connection.socket(), way);
        }
        ::close(way);
    }

    std::string seen() const { return proxy.received().back(); }

    TestCertificate leaf = TestCertificate::selfSigned({});
    Certificate other = TestCertificate::authority().certificate();

    RawServer proxy{[this](RawConnection& connection) { serveProxy(connection); }};
};

TEST_F(ProxyTest, OfTheEnvironmentIsUsedUnlessTheSettingsSayOtherwise) {
    const auto expectProxied = [this](const TransportSettings& settings) {
        const auto heard = send(*unpinned(settings), get("http://api.example/path"));
        EXPECT_TRUE(succeeded(heard));
        EXPECT_EQ(heard->body, "by proxy!");
        EXPECT_TRUE(seen().starts_with("GET http://api.example/path HTTP/1.1\r\n")) << seen();
    };
    expectProxied({.proxy = proxy.url("")});
    setenv("http_proxy", proxy.url("").c_str(), 1);
    expectProxied({});
    EXPECT_TRUE(failedWith(send(*unpinned({.proxy = ""}), get("http://127.0.0.1:1/")),
                           HTTPErrorCode::CannotConnect));
}

TEST_F(ProxyTest, PinsHoldThroughATunnel) {
    serveBehindProxy();
    auto request = get(server->secureUrl("/"));
    request.headerFields["X-Session"] = "secret";
    const auto heard = send(*pinning("localhost", {leaf.certificate()}), request);
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "served");
    EXPECT_FALSE(heard->responses.front().headerFields.contains("X-Proxy"));
    EXPECT_EQ(seen().find("secret"), std::string::npos) << "the proxy saw " << seen();
    EXPECT_TRUE(
        failedWith(send(*pinning("localhost", {other}), request), HTTPErrorCode::ServerTrust));
}

TEST_F(ProxyTest, APinnedNameWithADotBehindItIsPinned) {
    // Through the tunnel, because names on loopback have no such spelling.
    trustBySystem(leaf);
    serveBehindProxy();
    const auto request = get(server->secureUrl("/", "localhost."));
    EXPECT_TRUE(succeeded(send(*unpinned(), request)));
    EXPECT_TRUE(
        failedWith(send(*pinning("localhost", {other}), request), HTTPErrorCode::ServerTrust));
}

} // namespace
} // namespace KeloAPI::testing
