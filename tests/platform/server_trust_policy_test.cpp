#include <KeloAPI/platform/http/ServerTrustPolicy.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

ServerTrustPolicyManager pinned(const char* host) {
    return ServerTrustPolicyManager({{host, PinCertificates{}}});
}

bool pins(const ServerTrustPolicyManager& manager, const char* host) {
    const auto* policy = manager.policyForHost(host);
    return policy != nullptr && std::holds_alternative<PinCertificates>(*policy);
}

} // namespace

TEST(ServerTrustPolicyTest, IsThatOfTheHostAlone) {
    const auto manager = pinned("service.example");
    EXPECT_TRUE(pins(manager, "service.example"));
    for (const char* other : {"", "example", "a.service.example", "service.example.org", "service",
                              "xservice.example"}) {
        EXPECT_EQ(manager.policyForHost(other), nullptr) << other;
    }
    EXPECT_EQ(ServerTrustPolicyManager().policyForHost("service.example"), nullptr);
}

TEST(ServerTrustPolicyTest, IgnoresCaseAndPortOnEitherSide) {
    for (const char* listed : {"localhost", "LocalHost", "localhost:8443"}) {
        const auto manager = pinned(listed);
        for (const char* asked : {"localhost", "LOCALHOST", "localhost:1", "LocalHost:"}) {
            EXPECT_TRUE(pins(manager, asked)) << listed << ' ' << asked;
        }
    }
}

TEST(ServerTrustPolicyTest, KnowsAddresses) {
    for (const char* listed : {"::1", "[::1]", "[::1]:8443"}) {
        const auto manager = pinned(listed);
        for (const char* asked : {"::1", "[::1]", "[::1]:9"}) {
            EXPECT_TRUE(pins(manager, asked)) << listed << ' ' << asked;
        }
        EXPECT_FALSE(pins(manager, "::2"));
        EXPECT_FALSE(pins(manager, ""));
    }
    EXPECT_TRUE(pins(pinned("127.0.0.1:1"), "127.0.0.1"));
    EXPECT_TRUE(pins(pinned("[2001:DB8::7]"), "2001:db8::7"));
    EXPECT_TRUE(pins(pinned("[::1"), "::1")) << "a bracket that does not close";
}

TEST(ServerTrustPolicyTest, EveryHostHasItsOwn) {
    const ServerTrustPolicyManager manager(
        {{"a", PerformDefaultEvaluation{}}, {"b", PinCertificates{}}});
    ASSERT_NE(manager.policyForHost("a"), nullptr);
    EXPECT_TRUE(std::holds_alternative<PerformDefaultEvaluation>(*manager.policyForHost("a")));
    EXPECT_TRUE(pins(manager, "b"));
    EXPECT_EQ(manager.policyForHost("c"), nullptr);
}

} // namespace KeloAPI
