#include "support/Loopback.hpp"
#include "TrustTest.hpp"

#include <KeloAPI/curl/internal/CurlOptions.hpp>
#include <KeloAPI/curl/internal/TrustStore.hpp>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace KeloAPI::testing {
namespace {

using std::chrono::hours;

CertificateWish valid(hours from, hours to) {
    CertificateWish wish;
    wish.notBefore = from;
    wish.notAfter = to;
    return wish;
}

CertificateWish forAnotherName() {
    CertificateWish wish;
    wish.commonName = "localhost"; // which is not where names are looked for
    wish.names = "DNS:elsewhere.example";
    return wish;
}

TEST(TestCertificateTest, AKeyIsNoCertificateAndMayStandBeforeOne) {
    const auto made = TestCertificate::selfSigned({});
    EXPECT_FALSE(Certificate::fromPEM(made.keyPem()));
    EXPECT_EQ(Certificate::fromPEM(made.keyPem() + made.pem()), made.certificate());
}

/// A server that the system trusts or does not, and the pins of a transport that asks it.
struct TrustCase {
    const char* what;
    TestCertificate leaf;
    std::vector<TestCertificate> pins;
    bool isTrustedBySystem = false;
    bool isAccepted = false;
    const char* pinnedHost = "localhost";
};

TEST_F(TrustTest, APinnedHostIsJudgedByItsPinsAloneAndAllOthersByTheSystem) {
    const auto authority = TestCertificate::authority();
    const auto other = TestCertificate::authority("other");
    const auto leaf = authority.issue({});
    const auto lone = TestCertificate::selfSigned({});
    const auto elsewhere = authority.issue(forAnotherName());
    const auto expired = authority.issue(valid(-hours(48), -hours(24)));
    const auto future = authority.issue(valid(hours(24), hours(48)));
    const std::vector<TrustCase> cases = {
        {"a pinned leaf", leaf, {leaf}, false, true},
        {"a pinned self-signed leaf", lone, {lone}, false, true},
        {"a pinned authority", leaf, {authority}, false, true},
        {"one of several pins", leaf, {other, authority}, false, true},
        {"ports play no part", lone, {lone}, false, true, "LOCALHOST:1"},
        {"pins of another authority", leaf, {other}, true, false},
        {"no pins at all", leaf, {}, true, false},
        {"another name", elsewhere, {authority, elsewhere}, true, false},
        {"expired", expired, {expired}, true, false},
        {"not valid yet", future, {future}, true, false},
        {"outside the table", leaf, {other}, false, false, "api.example"},
        {"outside the table, trusted", leaf, {other}, true, true, "api.example"},
        {"pins of another host are no trust", lone, {lone}, false, false, "127.0.0.1"}};
    for (const TrustCase& each : cases) {
        SCOPED_TRACE(each.what);
        unsetenv("SSL_CERT_FILE");
        if (each.isTrustedBySystem) {
            trustBySystem(authority);
        }
        serve(each.leaf);
        std::vector<Certificate> pins;
        for (const TestCertificate& pin : each.pins) {
            pins.push_back(pin.certificate());
        }
        const auto transport = pinning(each.pinnedHost, pins);
        for (const TransferKind kind : {TransferKind::Call, TransferKind::Download}) {
            const auto heard = send(*transport, get(server->secureUrl("/")),
                                    std::make_shared<RecordingObserver>(), kind);
            EXPECT_NE(heard->thread, std::this_thread::get_id());
            if (each.isAccepted) {
                EXPECT_TRUE(succeeded(heard));
                EXPECT_EQ(heard->body, "served");
            } else {
                EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ServerTrust));
                EXPECT_EQ(server->requests(), 0);
            }
        }
    }
}

TEST_F(TrustTest, TheSystemsStoreMayBeAFolder) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    char name[16];
    static_cast<void>(
        std::snprintf(name, sizeof name, "%08lx.0", X509_subject_name_hash(leaf.x509())));
    const TemporaryFolder folder;
    folder.write(name, leaf.pem());
    setenv("SSL_CERT_DIR", folder.path().c_str(), 1);
    EXPECT_TRUE(succeeded(send(*unpinned(), get(server->secureUrl("/")))));
    unsetenv("SSL_CERT_DIR");
    EXPECT_TRUE(
        failedWith(send(*unpinned(), get(server->secureUrl("/"))), HTTPErrorCode::ServerTrust));
}

/// One libcurl handle, which keeps its connection and its TLS sessions from one request to the
/// next, and a server that counts both.
class TrustStoreTest : public TransportTest {
protected:
    /// What becomes of the connection.
    enum class After : long { Keep = 0, Close = 1 };

    CURLcode get(const ServerTrustPolicy* policy, After after) {
        CURL* easy = _handle.get();
        curl_easy_reset(easy);
        CurlOptions options(easy);
        const TrustStore store(policy);
        store.applyTo(options);
        options.set(CURLOPT_URL, server.secureUrl("/").c_str());
        options.set(CURLOPT_NOBODY, 1L);
        options.set(CURLOPT_FORBID_REUSE, static_cast<long>(after));
        EXPECT_EQ(options.code(), CURLE_OK);
        return curl_easy_perform(easy);
    }

    const TestCertificate authority = TestCertificate::authority();
    std::atomic<int> resumed = 0;
    RawServer server{authority.issue({}).serverContext(), [this](RawConnection& connection) {
                         resumed += SSL_session_reused(connection.session());
                         connection.serve(
                             [](const std::string&) { return "HTTP/1.1 204 No Content\r\n\r\n"; });
                     }};

private:
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> _handle{curl_easy_init(),
                                                                      &curl_easy_cleanup};
};

/// Whatever was connected and trusted before under one policy must not help under another, even for
/// the same name of the same server.
TEST_F(TrustStoreTest, ConnectionsAndTLSSessionsDoNotCrossPolicies) {
    const ServerTrustPolicy own = PinCertificates{{authority.certificate()}};
    const ServerTrustPolicy other =
        PinCertificates{{TestCertificate::authority("other").certificate()}};
    const auto expectRefusals = [&](After after) {
        EXPECT_EQ(get(&other, after), CURLE_PEER_FAILED_VERIFICATION);
        EXPECT_EQ(get(nullptr, after), CURLE_PEER_FAILED_VERIFICATION);
    };
    EXPECT_EQ(get(&own, After::Keep), CURLE_OK);
    EXPECT_EQ(get(&own, After::Keep), CURLE_OK);
    ASSERT_EQ(server.connections(), 1) << "the connection was not kept";
    expectRefusals(After::Keep);
    EXPECT_EQ(get(&own, After::Close), CURLE_OK);
    EXPECT_EQ(get(&own, After::Close), CURLE_OK);
    ASSERT_EQ(server.connections(), 2);
    ASSERT_EQ(resumed, 1) << "the TLS session was not kept";
    expectRefusals(After::Close);
}

TEST_F(TrustTest, AServerThatIsTrustedUnderOneNameIsRefusedUnderAPinnedOne) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    const auto transport =
        pinning("localhost", {TestCertificate::authority("other").certificate()});
    const auto expectRefused = [&] {
        EXPECT_TRUE(
            failedWith(send(*transport, get(server->secureUrl("/"))), HTTPErrorCode::ServerTrust));
    };
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(succeeded(send(*transport, get(server->secureUrl("/", "127.0.0.1")))));
        expectRefused();
    }
    EXPECT_EQ(server->connections(), 1);
    // More than libcurl takes for a URL: the next is judged as before.
    std::string longest = server->secureUrl("/?");
    longest.resize(9'000'000, 'q');
    EXPECT_TRUE(failedWith(send(*transport, get(longest)), HTTPErrorCode::UnsupportedURL));
    expectRefused();
    EXPECT_EQ(server->requests(), 3);
}

TEST_F(TrustTest, EachHopOfARedirectIsJudgedByItsOwnPolicy) {
    const auto authority = TestCertificate::authority();
    const auto other = TestCertificate::authority("other").certificate();
    const auto own = authority.certificate();
    const struct {
        const char* from;
        const char* to;
        std::vector<Certificate> pins;
        bool isTrustedBySystem;
        int answered;
    } table[] = {{"localhost", "127.0.0.1", {own}, false, 1},
                 {"localhost", "127.0.0.1", {own}, true, 2},
                 {"127.0.0.1", "localhost", {other}, true, 1},
                 {"127.0.0.1", "localhost", {}, true, 1},
                 {"127.0.0.1", "localhost", {own}, true, 2}};
    for (const auto& one : table) {
        SCOPED_TRACE(::testing::Message() << one.from << one.pins.size() << one.answered);
        unsetenv("SSL_CERT_FILE");
        if (one.isTrustedBySystem) {
            trustBySystem(authority);
        }
        serve(authority.issue({}));
        target = server->secureUrl("/", one.to);
        const auto heard =
            send(*pinning("localhost", one.pins), get(server->secureUrl("/away", one.from)));
        EXPECT_EQ(server->requests(), one.answered);
        if (one.answered == 1) {
            EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ServerTrust));
        } else {
            ASSERT_TRUE(succeeded(heard));
            EXPECT_EQ(heard->responses.front().url.absoluteString(), target);
        }
    }
}

TEST_F(TrustTest, ARedirectOutOfTLSIsRefusedAndNothingSent) {
    const RawServer plain(answeringAll(okResponse()));
    const auto leaf = TestCertificate::selfSigned({});
    trustBySystem(leaf);
    serve(leaf);
    target = plain.url("/");
    for (const auto& transport : {pinning("localhost", {leaf.certificate()}), unpinned()}) {
        EXPECT_TRUE(failedWith(send(*transport, get(server->secureUrl("/away"))),
                               HTTPErrorCode::ServerTrust));
        const auto heard =
            send(*transport, with(Method::POST, server->secureUrl("/away"), "secret"));
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ServerTrust));
        EXPECT_TRUE(heard->responses.empty());
    }
    EXPECT_EQ(plain.requests(), 0);
    EXPECT_EQ(server->requests(), 4);
}

TEST_F(TrustTest, ARedirectIntoTLSIsFollowed) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    const RawServer plain(answeringAll("HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " +
                                       server->secureUrl("/") + "\r\n\r\n"));
    const auto transport = pinning("localhost", {leaf.certificate()});
    EXPECT_TRUE(succeeded(send(*transport, get(plain.url("/")))));
}

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
        unsetenv("no_proxy");
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
    setenv("no_proxy", "api.example", 1);
    expectProxied({.proxy = proxy.url("")});
    unsetenv("no_proxy");
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
