#include "TrustTest.hpp"

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

/// Whatever was connected and trusted before under one policy must not help under another.
TEST_F(TrustTest, ConnectionsAndTLSSessionsDoNotCrossPolicies) {
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

} // namespace
} // namespace KeloAPI::testing
