#include "support/GeneratedBlock.hpp"
#include "support/RawServer.hpp"
#include "TransportTest.hpp"

namespace KeloAPI::testing {
namespace {

/// A cookie that one URL sets, and whether another hears of it.
struct CookieCase {
    const char* rule;
    std::string set; ///< The value of Set-Cookie.
    std::string to;  ///< The URL that is asked then.
    bool isSent;
    std::string from = "http://api.example.test/a/b";
};

const std::string sameHost = "http://api.example.test/a/b";
const std::string secureHost = "https://api.example.test/a/b";

std::vector<CookieCase> cookieCases() {
    const char* host = "a cookie without Domain goes to its host alone";
    const char* domain = "with Domain, to that name and those below it; never set for another";
    const char* path = "to the paths below Path, or below where it was set";
    const char* expiry = "as long as it lasts; Max-Age counts before Expires";
    const char* secure = "Secure not out of TLS, where it cannot be set either";
    const char* prefix =
        "`__Secure-` only as Secure, `__Host-` also for its host and all paths alone";
    const char* odd = "what cannot be read is left out";
    const char* late = "an empty part before the cookie is overlooked, by libcurl alone";
    const std::string api = "http://api.example.test/";
    const std::string address = "http://127.0.0.1/";
    return {
        {host, "a=1", sameHost, true},
        {host, "a=1", "http://API.example.test/a/b", true},
        {host, "a=1", "http://api.example.test:8080/a/b", true},
        {host, "a=1; HttpOnly; SameSite=Strict", sameHost, true},
        {host, "a=1", "http://www.api.example.test/a/b", false},
        {host, "a=1", "http://example.test/a/b", false},
        {host, "a=1", "http://other.example.test/a/b", false},
        {host, "a=1", "http://xapi.example.test/a/b", false},
        {host, "a=1; Domain=", sameHost, true},
        {host, "a=1", address, true, address},
        {host, "a=1", "http://127.0.0.2/", false, address},
        {domain, "a=1; Domain=example.test", sameHost, true},
        {domain, "a=1; Domain=.example.test", sameHost, true},
        {domain, "a=1; domain=EXAMPLE.test", sameHost, true},
        {domain, "a=1; Domain=example.test", "http://other.example.test/a/b", true},
        {domain, "a=1; Domain=example.test", "http://example.test/a/b", true},
        {domain, "a=1; Domain=api.example.test", "http://www.api.example.test/a/b", true},
        {domain, "a=1; Domain=api.example.test", "http://example.test/a/b", false},
        {domain, "a=1; Domain=example.test", "http://anexample.test/a/b", false},
        {domain, "a=1; Domain=other.example.test", "http://other.example.test/a/b", false},
        {domain, "a=1; Domain=other.test", "http://other.test/a/b", false},
        {domain, "a=1; Domain=www.api.example.test", "http://www.api.example.test/a/b", false},
        {domain, "a=1; Domain=pi.example.test", "http://pi.example.test/a/b", false},
        {domain, "a=1; Domain=com", "http://b.com/", false, "http://a.com/"},
        {domain, "a=1; Domain=co.uk", "http://b.co.uk/", false, "http://a.co.uk/"},
        {domain, "a=1; Domain=0.0.1", "http://2.0.0.1/", false, address},
        {path, "a=1", "http://api.example.test/a/c", true},
        {path, "a=1", "http://api.example.test/a/b/c", true},
        {path, "a=1", "http://api.example.test/b", false},
        {path, "a=1", "http://api.example.test/ab", false},
        {path, "a=1; Path=/", "http://api.example.test/b", true},
        {path, "a=1; Path=/b", "http://api.example.test/b", true},
        {path, "a=1; Path=/b", "http://api.example.test/b/c", true},
        {path, "a=1; Path=/b/", "http://api.example.test/b/c", true},
        {path, "a=1; Path=/b", "http://api.example.test/b?q", true},
        {path, "a=1; Path=/b", "http://api.example.test/bc", false},
        {path, "a=1; Path=/b", "http://api.example.test/B", false},
        {path, "a=1; Path=/b", api, false},
        {expiry, "a=1; Max-Age=60", sameHost, true},
        {expiry, "a=1; Max-Age=0", sameHost, false},
        {expiry, "a=1; Max-Age=-1", sameHost, false},
        {expiry, "a=1; Expires=Wed, 01 Jan 2098 00:00:00 GMT", sameHost, true},
        {expiry, "a=1; Expires=Thu, 01 Jan 1998 00:00:00 GMT", sameHost, false},
        {expiry, "a=1; Expires=Thu, 01-Jan-1998 00:00:00 GMT", sameHost, false},
        {expiry, "a=1; Expires=Thu, 01 Jan 1998 00:00:00 GMT; Max-Age=60", sameHost, true},
        {expiry, "a=1; Expires=Wed, 01 Jan 2098 00:00:00 GMT; Max-Age=0", sameHost, false},
        {expiry, "a=1; Expires=some day", sameHost, true},
        {secure, "a=1; Secure", sameHost, false},
        {secure, "a=1; secure", sameHost, false},
        {secure, "a=1; Secure", secureHost, true, secureHost},
        {secure, "a=1", secureHost, true, secureHost},
        {secure, "a=1", sameHost, true, secureHost},
        {secure, "a=1; Secure", sameHost, false, secureHost},
        {secure, "a=1; Secure", secureHost, false},
        {prefix, "__Secure-a=1; Secure", secureHost, true, secureHost},
        {prefix, "__Secure-a=1", secureHost, false, secureHost},
        {prefix, "__Host-a=1; Secure; Path=/", secureHost, true, secureHost},
        {prefix, "__Host-a=1; Path=/", secureHost, false, secureHost},
        {prefix, "__Host-a=1; Secure; Path=/a", secureHost, false, secureHost},
        {prefix, "__Host-a=1; Secure; Path=/; Domain=example.test", secureHost, false, secureHost},
        {prefix, "__Secure-a=1", sameHost, false},
        {prefix, "__Secure-a=1; Secure", sameHost, false},
        {prefix, "__Host-a=1; Path=/", sameHost, false},
        {prefix, "__Host-a=1; Secure; Path=/", sameHost, false},
        {odd, "", sameHost, false},
        {odd, "=", sameHost, false},

        {odd, "a=1; Unknown=2", sameHost, true},
        {odd, "a=1\x01", sameHost, false},
        {odd, "a=" + std::string(5000, 'x'), sameHost, false},
        {late, "; a=1", sameHost, true}};
}

/// Cookies of any host: the server is the proxy, and the other end of the tunnels through it.
class CookieTable : public TransportTest {
protected:
    bool isSent(const CookieCase& each) const {
        const auto response =
            "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nSet-Cookie: " + each.set + "\r\n\r\n";
        const RawServer server([&](RawConnection& connection) {
            for (auto request = connection.readRequest(); !request.empty();
                 request = connection.readRequest()) {
                const bool tunnels = request.starts_with("CONNECT ");
                connection.write(tunnels ? "HTTP/1.1 200 Connected\r\n\r\n" : response);
                if (tunnels && !connection.startTLS(_tls.get())) {
                    return;
                }
            }
        });
        std::map<std::string, ServerTrustPolicy> table;
        table.emplace("api.example.test", PinCertificates{{_certificate.certificate()}});
        CurlTransport transport(ServerTrustPolicyManager(table), {.proxy = server.url("")});
        EXPECT_TRUE(succeeded(send(transport, get(each.from))));
        EXPECT_TRUE(succeeded(send(transport, get(each.to))));
        return server.received().back().find("\r\nCookie: ") != std::string::npos;
    }

private:
    const TestCertificate _certificate =
        TestCertificate::selfSigned({.names = "DNS:api.example.test"});
    const std::shared_ptr<SSL_CTX> _tls = _certificate.serverContext();
};

TEST_F(CookieTable, EachComesBackToWhomItIsFor) {
    struct Row {
        int cases = 0;
        int expected = 0;
        int sent = 0;
    };
    std::vector<std::pair<std::string, Row>> rows;
    for (const CookieCase& each : cookieCases()) {
        SCOPED_TRACE(each.set + " from " + each.from + " to " + each.to);
        if (rows.empty() || rows.back().first != each.rule) {
            rows.emplace_back(each.rule, Row{});
        }
        Row& row = rows.back().second;
        const bool sent = isSent(each);
        EXPECT_EQ(sent, each.isSent);
        ++row.cases;
        row.expected += each.isSent ? 1 : 0;
        row.sent += sent ? 1 : 0;
    }
    std::string table = "| Cookies | Cases | to be sent | sent |\n| --- | --- | --- | --- |\n";
    for (const auto& [rule, row] : rows) {
        table += "| " + rule + " | " + std::to_string(row.cases) + " | " +
                 std::to_string(row.expected) + " | " + std::to_string(row.sent) + " |\n";
    }
    expectGeneratedBlock(KELO_RELIABILITY_PAGE, "cookies", table);
}

} // namespace
} // namespace KeloAPI::testing
