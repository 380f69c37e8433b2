#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

/// How many certificates are pinned for the host; -1 where the system's store decides.
int pinsAt(const ServerTrustPolicyManager& manager, const std::string& host) {
    const auto* policy = manager.policyFor(URL::parse("https://" + host + "/").value());
    const auto* pins = policy == nullptr ? nullptr : std::get_if<PinCertificates>(policy);
    return pins == nullptr ? -1 : static_cast<int>(pins->certificates.size());
}

/// Pins two certificates, so that an empty list is told from them.
ServerTrustPolicyManager pinningTwo(const std::string& host) {
    return ServerTrustPolicyManager({{host, PinCertificates{Certificates::chain()}}});
}

} // namespace

TEST(ServerTrustPolicyTest, IsThatOfTheHostAlone) {
    const auto manager = pinningTwo("service.example");
    EXPECT_EQ(pinsAt(manager, "service.example"), 2);
    for (const char* other :
         {"example", "a.service.example", "service.example.org", "service", "xservice.example"}) {
        EXPECT_EQ(pinsAt(manager, other), -1) << other;
    }
    EXPECT_EQ(pinsAt(ServerTrustPolicyManager(), "service.example"), -1);
}

TEST(ServerTrustPolicyTest, IgnoresCaseAndWhatStandsBesideTheHost) {
    for (const char* listed : {"LocalHost.:8443", "localhost:", "u:p@localhost/a:b:c@d#e:f"}) {
        const auto manager = pinningTwo(listed);
        EXPECT_EQ(pinsAt(manager, "u:p:q@LocalHost:"), 2) << listed;
        EXPECT_EQ(pinsAt(manager, "d"), -1) << listed;
    }
    for (const char* listed : {"::1", "[::1]", "u:p@[0:0:0:0:0:0:0:1]:8443"}) {
        const auto manager = pinningTwo(listed);
        EXPECT_EQ(pinsAt(manager, "u:p@[0::0.0.0.1]:9"), 2) << listed;
        EXPECT_EQ(pinsAt(manager, "[::2]"), -1) << listed;
    }
}

TEST(ServerTrustPolicyTest, AHostThatIsNotUnderstoodIsRefused) {
    for (const char* host : {"", "u:p@", "local%68ost", "127.1", "[v1.a]"}) {
        EXPECT_EQ(pinsAt(ServerTrustPolicyManager(), host), 0) << host;
        EXPECT_EQ(pinsAt(pinningTwo("localhost"), host), 0) << host;
    }
}

TEST(ServerTrustPolicyTest, AnEntryThatIsNotUnderstoodRefusesEveryHost) {
    for (const char* listed : {"", "a@b@localhost", "u:p@::1", "[::1", "::1]", "local%68ost",
                               "127.1", "not a host", "?x", "/localhost", "\xEF\xBD\x8Cocalhost"}) {
        const auto certificates = PinCertificates{Certificates::chain()};
        const ServerTrustPolicyManager manager(
            {{listed, certificates}, {"service.example", certificates}});
        for (const char* asked : {"localhost", "service.example", "[::1]", "elsewhere.example"}) {
            EXPECT_EQ(pinsAt(manager, asked), 0) << listed << ' ' << asked;
        }
    }
}

TEST(ServerTrustPolicyTest, EveryHostHasItsOwn) {
    const ServerTrustPolicyManager manager(
        {{"a", PerformDefaultEvaluation{}}, {"b", PinCertificates{Certificates::chain()}}});
    const auto* ofA = manager.policyFor(URL::parse("https://a").value());
    ASSERT_NE(ofA, nullptr);
    EXPECT_TRUE(std::holds_alternative<PerformDefaultEvaluation>(*ofA));
    EXPECT_EQ(pinsAt(manager, "b"), 2);
    EXPECT_EQ(pinsAt(manager, "c"), -1);
}

} // namespace KeloAPI::testing
