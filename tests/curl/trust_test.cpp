#include "TrustTest.hpp"

namespace KeloAPI::testing {
namespace {

using std::chrono::hours;

TEST_F(TrustTest, PinnedLeafIsAccepted) {
    const auto leaf = TestCertificate::authority().issue({});
    serve(leaf);
    const auto transport = pinning("localhost", {leaf.certificate()});
    const auto heard = send(*transport, get(server->url("/")));
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->body, "served");
}

TEST_F(TrustTest, PinnedSelfSignedLeafIsAccepted) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    EXPECT_TRUE(
        succeeded(send(*pinning("localhost", {leaf.certificate()}), get(server->url("/")))));
}

TEST_F(TrustTest, PinnedAuthorityIsAccepted) {
    const auto authority = TestCertificate::authority();
    serve(authority.issue({}));
    const auto transport = pinning("localhost", {authority.certificate()});
    EXPECT_TRUE(succeeded(send(*transport, get(server->url("/")))));
}

TEST_F(TrustTest, OneOfSeveralPinsSuffices) {
    const auto authority = TestCertificate::authority();
    serve(authority.issue({}));
    const auto transport = pinning(
        "localhost", {TestCertificate::authority("other").certificate(), authority.certificate()});
    EXPECT_TRUE(succeeded(send(*transport, get(server->url("/")))));
}

TEST_F(TrustTest, PortsPlayNoPartInTheTable) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    const auto transport = pinning("LOCALHOST:1", {leaf.certificate()});
    EXPECT_TRUE(succeeded(send(*transport, get(server->url("/")))));
}

TEST_F(TrustTest, WhatOnlyTheSystemTrustsIsRefusedWherePinsAre) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    const auto pinned = pinning("localhost", {TestCertificate::authority("other").certificate()});
    EXPECT_TRUE(failedWith(send(*pinned, get(server->url("/"))), HTTPErrorCode::ServerTrust));
    // The same server under the same system store, for a transport without pins.
    EXPECT_TRUE(succeeded(send(*unpinned(), get(server->url("/")))));
    EXPECT_EQ(server->requests(), 1);
}

TEST_F(TrustTest, AnotherSpellingOfThePinnedHostDoesNotEscapeThePins) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    const auto pinned = pinning("localhost", {TestCertificate::authority("other").certificate()});
    for (const char* host : {"LocalHost", "local%68ost"}) {
        EXPECT_TRUE(
            failedWith(send(*pinned, get(server->url("/", host))), HTTPErrorCode::ServerTrust))
            << host;
    }
    EXPECT_EQ(server->requests(), 0);
}

TEST_F(TrustTest, LeafForAnotherNameIsRefused) {
    CertificateWish wish;
    wish.commonName = "localhost"; // which is not where names are looked for
    wish.names = "DNS:elsewhere.example";
    const auto authority = TestCertificate::authority();
    const auto leaf = authority.issue(wish);
    serve(leaf);
    const auto transport = pinning("localhost", {authority.certificate(), leaf.certificate()});
    EXPECT_TRUE(failedWith(send(*transport, get(server->url("/"))), HTTPErrorCode::ServerTrust));
    EXPECT_EQ(server->requests(), 0);
}

TEST_F(TrustTest, ExpiredLeafIsRefused) {
    CertificateWish wish;
    wish.notBefore = -hours(48);
    wish.notAfter = -hours(24);
    const auto leaf = TestCertificate::authority().issue(wish);
    serve(leaf);
    const auto transport = pinning("localhost", {leaf.certificate()});
    EXPECT_TRUE(failedWith(send(*transport, get(server->url("/"))), HTTPErrorCode::ServerTrust));
}

TEST_F(TrustTest, LeafOfTheFutureIsRefused) {
    CertificateWish wish;
    wish.notBefore = hours(24);
    wish.notAfter = hours(48);
    const auto leaf = TestCertificate::authority().issue(wish);
    serve(leaf);
    const auto transport = pinning("localhost", {leaf.certificate()});
    EXPECT_TRUE(failedWith(send(*transport, get(server->url("/"))), HTTPErrorCode::ServerTrust));
}

TEST_F(TrustTest, EmptyPinListRefusesEveryServerAndSendsNothing) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    const auto transport = pinning("localhost", {});
    const auto heard = send(*transport, get(server->url("/")));
    EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ServerTrust));
    EXPECT_EQ(server->requests(), 0);
    EXPECT_NE(heard->thread, std::this_thread::get_id());
}

TEST_F(TrustTest, HostOutsideTheTableIsJudgedByTheSystemsStore) {
    const auto authority = TestCertificate::authority();
    serve(authority.issue({}));
    const auto pins = std::vector{TestCertificate::authority("other").certificate()};
    EXPECT_TRUE(failedWith(send(*pinning("api.example", pins), get(server->url("/"))),
                           HTTPErrorCode::ServerTrust));
    trustBySystem(authority);
    EXPECT_TRUE(succeeded(send(*pinning("api.example", pins), get(server->url("/")))));
}

TEST_F(TrustTest, PinsOfOneHostAreNoTrustForAnother) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    const auto transport = pinning("localhost", {leaf.certificate()});
    EXPECT_TRUE(succeeded(send(*transport, get(server->url("/", "localhost")))));
    EXPECT_TRUE(failedWith(send(*transport, get(server->url("/", "127.0.0.1"))),
                           HTTPErrorCode::ServerTrust));
}

TEST_F(TrustTest, EveryRequestIsJudgedByItsOwnHost) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    const auto pinned = pinning("localhost", {TestCertificate::authority("other").certificate()});
    const auto expectRefused = [&] {
        EXPECT_TRUE(failedWith(send(*pinned, get(server->url("/"))), HTTPErrorCode::ServerTrust));
    };
    for (int round = 0; round < 3; ++round) {
        expectRefused();
        EXPECT_TRUE(succeeded(send(*pinned, get(server->url("/", "127.0.0.1")))));
    }
    // More than libcurl takes for a URL: whatever is made of it, the next is judged as before.
    std::string longest = server->url("/?");
    longest.resize(9'000'000, 'q');
    EXPECT_TRUE(send(*pinned, get(longest))->error);
    expectRefused();
}

TEST_F(TrustTest, RedirectFromPinnedToUnpinnedIsJudgedByTheSystemsStore) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    target = server->url("/", "127.0.0.1");
    const auto transport = pinning("localhost", {leaf.certificate()});
    EXPECT_TRUE(
        failedWith(send(*transport, get(server->url("/away"))), HTTPErrorCode::ServerTrust));
    EXPECT_EQ(server->requests(), 1);

    trustBySystem(leaf);
    const auto trusting = pinning("localhost", {leaf.certificate()});
    const auto heard = send(*trusting, get(server->url("/away")));
    EXPECT_TRUE(succeeded(heard));
    EXPECT_EQ(heard->responses.front().url.absoluteString(), target);
}

TEST_F(TrustTest, RedirectFromUnpinnedToPinnedIsJudgedByThePins) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    target = server->url("/", "localhost");
    const auto strict = pinning("localhost", {TestCertificate::authority("other").certificate()});
    EXPECT_TRUE(failedWith(send(*strict, get(server->url("/away", "127.0.0.1"))),
                           HTTPErrorCode::ServerTrust));
    EXPECT_EQ(server->requests(), 1);
    const auto fitting = pinning("localhost", {authority.certificate()});
    EXPECT_TRUE(succeeded(send(*fitting, get(server->url("/away", "127.0.0.1")))));
}

TEST_F(TrustTest, RedirectToAnEmptyPinListIsRefused) {
    const auto leaf = TestCertificate::selfSigned({});
    trustBySystem(leaf);
    serve(leaf);
    target = server->url("/", "localhost");
    EXPECT_TRUE(failedWith(send(*pinning("localhost", {}), get(server->url("/away", "127.0.0.1"))),
                           HTTPErrorCode::ServerTrust));
    EXPECT_EQ(server->requests(), 1);
}

TEST_F(TrustTest, ARedirectOutOfTLSIsRefusedAndNothingSent) {
    TestServer plain;
    plain.start();
    const auto leaf = TestCertificate::selfSigned({});
    trustBySystem(leaf);
    serve(leaf);
    target = plain.url("/");
    for (const auto& transport : {pinning("localhost", {leaf.certificate()}), unpinned()}) {
        EXPECT_TRUE(
            failedWith(send(*transport, get(server->url("/away"))), HTTPErrorCode::ServerTrust));
        const auto heard = send(*transport, with(Method::POST, server->url("/away"), "secret"));
        EXPECT_TRUE(failedWith(heard, HTTPErrorCode::ServerTrust));
        EXPECT_TRUE(heard->responses.empty());
    }
    EXPECT_EQ(plain.requests(), 0);
    EXPECT_EQ(server->requests(), 4);
}

TEST_F(TrustTest, ARedirectIntoTLSIsFollowed) {
    const auto leaf = TestCertificate::selfSigned({});
    serve(leaf);
    TestServer plain;
    plain.routes().Get("/", [this](const httplib::Request&, httplib::Response& response) {
        response.set_redirect(server->url("/"));
    });
    plain.start();
    const auto transport = pinning("localhost", {leaf.certificate()});
    EXPECT_TRUE(succeeded(send(*transport, get(plain.url("/", "127.0.0.1")))));
}

/// Whatever was connected and trusted before under one policy must not help under another.
TEST_F(TrustTest, ConnectionsAndTLSSessionsDoNotCrossPolicies) {
    const auto authority = TestCertificate::authority();
    trustBySystem(authority);
    serve(authority.issue({}));
    const auto transport =
        pinning("localhost", {TestCertificate::authority("other").certificate()});
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(succeeded(send(*transport, get(server->url("/", "127.0.0.1")))));
        EXPECT_TRUE(failedWith(send(*transport, get(server->url("/", "localhost"))),
                               HTTPErrorCode::ServerTrust));
    }
    EXPECT_EQ(server->connections(), 1U);
    EXPECT_EQ(server->requests(), 3);
}

TEST_F(TrustTest, AServerWithoutTLSIsNoTrustedServer) {
    TestServer plain;
    plain.start();
    const std::string url = "https://localhost:" + std::to_string(plain.port()) + "/";
    const auto transport = pinning("localhost", {TestCertificate::authority().certificate()});
    EXPECT_TRUE(failedWith(send(*transport, get(url)), HTTPErrorCode::ServerTrust));
}

} // namespace
} // namespace KeloAPI::testing
