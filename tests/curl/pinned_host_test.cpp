#include "support/MainLoop.hpp"
#include "support/RecordingDelegate.hpp"
#include "TrustTest.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Session.hpp>

#include <arpa/inet.h>
#include <curl/curl.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <algorithm>
#include <array>
#include <optional>

/// No spelling of a pinned host escapes its pins, in the table or in a URL.
namespace KeloAPI::testing {
namespace {

using Parts = std::initializer_list<const char*>;

constexpr Parts usersOfHosts = {"", "@", "u@", "u:p@", "u:p:q@", "%40:@"};

constexpr Parts spellingsOfHosts = {
    "localhost", "LOCALHOST", "LocalHost", "localhost.", "LOCALHOST.", "localhost..", ".localhost",
    "local%68ost", "%4Cocalhost", "localhost%2e", "localhost%00", "localhost%2F",
    // full-width letters, digits and dots
    "\xEF\xBD\x8Cocalhost", "%EF%BD%8Cocalhost", "%EF%BC%B2.localhost", "localhost%E3%80%82",
    "127%E3%80%820.0.1", "%EF%BC%91%EF%BC%92%EF%BC%97.0.0.1", "%E2%91%A027.0.0.1",
    // an invisible soft hyphen
    "local%C2%ADhost",
    // the address of the server
    "127.0.0.1", "127.0.0.1.", "127.1", "127.0.1", "0x7f.1", "0X7F000001", "2130706433",
    "0177.0.0.1", "127.0.0.01", "127.0.0.0x1", "127.0.0%2e1",
    // and those of six numbers
    "[::1]", "[0:0:0:0:0:0:0:1]", "[::0.0.0.1]", "[::FFFF:127.0.0.1]", "[::ffff:7f00:1]",
    "[::1%25lo]", "[::1%lo]", "[v1.localhost]", "::1", "[::1", "localhost]",
    // others
    "", ".", "a:b:c@localhost", "a@b@localhost", "localhost\\", "localhost,", "local~host",
    "_a.localhost", "xn--a.localhost", "elsewhere.localhost"};

constexpr Parts portsOfHosts = {"", ":", ":PORT", ":0PORT"};

constexpr Parts tailsOfHosts = {"",
                                "/",
                                "/v1:2",
                                "?",
                                "?t=1:2",
                                "#",
                                "#a:b",
                                "/a:b:c@elsewhere.example",
                                "?@elsewhere.example",
                                "#@elsewhere.example:1"};

/// All spellings with these as they may stand in a URL.
std::vector<std::string> authorities(Parts users, Parts ports, Parts tails, int port = 8443) {
    std::vector<std::string> all;
    for (const auto& user : users) {
        for (const auto& host : spellingsOfHosts) {
            for (std::string end : ports) {
                if (const auto at = end.find("PORT"); at != std::string::npos) {
                    end.replace(at, 4, std::to_string(port));
                }
                for (const auto& tail : tails) {
                    all.push_back(std::string(user).append(host).append(end).append(tail));
                }
            }
        }
    }
    return all;
}

/// An IPv6 address in its shortest form; everything else as it is.
std::string shortest(const std::string& host) {
    in6_addr address{};
    std::array<char, INET6_ADDRSTRLEN> text{};
    return inet_pton(AF_INET6, host.c_str(), &address) == 1
               ? inet_ntop(AF_INET6, &address, text.data(), text.size())
               : host;
}

/// The host that libcurl goes to, as certificates name it; none where it goes nowhere.
std::optional<std::string> hostByLibcurl(const std::string& url) {
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler libcurlLosesAMappedName;
#endif
    std::optional<std::string> host;
    char* text = nullptr;
    CURLU* parts = curl_url();
    if (curl_url_set(parts, CURLUPART_URL, url.c_str(), 0) == CURLUE_OK &&
        curl_url_get(parts, CURLUPART_HOST, &text, CURLU_PUNYCODE) == CURLUE_OK) {
        host = text;
        curl_free(text);
        std::erase_if(*host, [](char c) { return c == '[' || c == ']'; });
        std::transform(host->begin(), host->end(), host->begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
        if (host->ends_with('.')) {
            host->pop_back();
        }
        host = shortest(*host);
    }
    curl_url_cleanup(parts);
    return host;
}

TEST(PinnedHostTest, AHostIsReadAsLibcurlReadsItOrNotAtAll) {
    int understood = 0;
    for (const std::string& text : authorities(usersOfHosts, portsOfHosts, tailsOfHosts)) {
        const std::string url = "https://" + text;
        if (const auto parsed = URL::parse(url); parsed && parsed->isHTTP()) {
            ++understood;
            EXPECT_EQ(parsed->host(), hostByLibcurl(url)) << url;
        }
    }
    EXPECT_GT(understood, 2000);
}

TEST(PinnedHostTest, NoEntryOfTheTableMissesItsOwnHost) {
    std::multimap<std::string, URL> urls;
    for (const std::string& text :
         authorities({"", "u:p@"}, {"", ":PORT"}, {"", "/v1:2", "?t=1:2"})) {
        const auto url = URL::parse("https://" + text);
        const auto host = hostByLibcurl("https://" + text);
        if (url && host) {
            urls.emplace(*host, *url);
        }
    }
    int compared = 0;
    for (const std::string& entry : authorities(usersOfHosts, {":PORT"}, tailsOfHosts)) {
        const ServerTrustPolicyManager table({{entry, PinCertificates{}}});
        const auto [begin, end] = urls.equal_range(hostByLibcurl("https://" + entry).value_or(""));
        for (auto at = begin; at != end; ++at, ++compared) {
            const auto* policy = table.policyFor(at->second);
            ASSERT_TRUE(policy != nullptr && std::holds_alternative<PinCertificates>(*policy))
                << entry << " and " << at->second.absoluteString();
        }
    }
    EXPECT_GT(compared, 10'000);
}

/// The server is one that the system trusts; the pins are of another authority.
class PinnedHostAtServer : public TrustTest {
protected:
    void SetUp() override {
        CertificateWish wish;
        wish.names = "DNS:localhost,IP:127.0.0.1,IP:::ffff:127.0.0.1";
        trustBySystem(authority);
        serve(authority.issue(wish));
    }

    /// True where libcurl by itself, without the pins, gets an answer there.
    bool isReachedByLibcurl(const std::string& url) const {
        curl_easy_setopt(_easy.get(), CURLOPT_URL, url.c_str());
        curl_easy_setopt(_easy.get(), CURLOPT_CAINFO, std::getenv("SSL_CERT_FILE"));
        curl_easy_setopt(_easy.get(), CURLOPT_NOBODY, 1L);
        return curl_easy_perform(_easy.get()) == CURLE_OK;
    }

    std::vector<std::string> spellings() const {
        return authorities({"", "u:p@"}, {":PORT"}, {"", "/v1:2", "?t=1:2"}, server->port());
    }

    TestCertificate authority = TestCertificate::authority();
    std::vector<Certificate> otherPins = {TestCertificate::authority("other").certificate()};

private:
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> _easy{curl_easy_init(), curl_easy_cleanup};
};

TEST_F(PinnedHostAtServer, NoURLReachesItPastThePins) {
    CurlTransport transport(
        ServerTrustPolicyManager({{"localhost", PinCertificates{otherPins}},
                                  {"127.0.0.1", PinCertificates{otherPins}},
                                  {"[::ffff:127.0.0.1]", PinCertificates{otherPins}}}));
    int reached = 0;
    for (const std::string& text : spellings()) {
        const std::string url = "https://" + text;
        reached += isReachedByLibcurl(url) ? 1 : 0;
        const auto request = get(url);
        if (!request.url) {
            continue;
        }
        const int before = server->requests();
        const auto heard = send(transport, request);
        EXPECT_TRUE(heard->error) << url;
        EXPECT_EQ(server->requests(), before) << url;
    }
    EXPECT_GT(reached, 50) << "of the spellings, too few lead to the server";
}

TEST_F(PinnedHostAtServer, NoHostOfADelegateReachesItPastThePins) {
    int asked = 0;
    for (const std::string& host : spellings()) {
        if (!URL::parse("https://" + host)) {
            continue; // stops the process
        }
        ++asked;
        const auto delegate = std::make_shared<RecordingDelegate>();
        delegate->host = host;
        delegate->sessionKey = "secret";
        const auto session = std::make_shared<Session>(SessionType::Authenticated);
        session->setDelegate(delegate);
        const auto endpoint = Endpoint::create(session);
        endpoint->setPath("users/me");
        std::optional<std::optional<Error>> outcome;
        endpoint->request([&](const std::optional<std::string>&,
                              const std::optional<Error>& error) { outcome = error; });
        ASSERT_TRUE(runUntil([&] { return outcome.has_value(); })) << host;
        ASSERT_TRUE(*outcome) << host;
        EXPECT_EQ((*outcome)->domain(), HTTPErrorDomain) << host;
    }
    EXPECT_EQ(server->requests(), 0);
    EXPECT_GT(asked, 100);
}

} // namespace
} // namespace KeloAPI::testing
