#include "CertificateCase.hpp"
#include "curl/TransportTest.hpp"
#include "OpenSSLAlone.hpp"
#include "support/GeneratedBlock.hpp"
#include "support/RawServer.hpp"
#include "support/TemporaryFolder.hpp"

namespace KeloAPI::testing {

namespace {

const std::string acceptance = "accepted";
const std::string refusal = "refused";

class CertificateMatrix : public TransportTest {
protected:
    void TearDown() override { unsetenv("SSL_CERT_FILE"); }

    /// What becomes of a request to the server of the case. The server stands at the end of the
    /// tunnel that it makes itself, so that it can have any name.
    std::string seenBy(const CertificateCase& each) {
        const auto tls = each.leaf.serverContext(each.sentBehind);
        const RawServer server([&](RawConnection& connection) {
            connection.readRequest();
            connection.write("HTTP/1.1 200 Connected\r\n\r\n");
            if (connection.startTLS(tls.get())) {
                connection.serve([](const std::string&) { return okResponse("served"); });
            }
        });
        const auto heard = send(*transportFor(each, server.url("")), get("https://" + each.host));
        if (succeeded(heard) && heard->body == "served") {
            return acceptance;
        }
        // The tunnel is all that was asked for; without any trust, not even that.
        EXPECT_EQ(server.requests(), each.trusted.empty() ? 0 : 1);
        return failedWith(heard, HTTPErrorCode::ServerTrust) ? refusal
                                                             : heard->error->description();
    }

    std::shared_ptr<CurlTransport> transportFor(const CertificateCase& each,
                                                const std::string& proxy) {
        std::map<std::string, ServerTrustPolicy> table;
        std::vector<Certificate> trusted;
        std::string pem;
        for (const TestCertificate& one : each.trusted) {
            trusted.push_back(one.certificate());
            pem += one.pem();
        }
        if (each.isPinned) {
            table.emplace(each.host, PinCertificates{trusted});
            unsetenv("SSL_CERT_FILE");
        } else {
            setenv("SSL_CERT_FILE", _folder.write("store.pem", pem).c_str(), 1);
        }
        return std::make_shared<CurlTransport>(ServerTrustPolicyManager(table),
                                               TransportSettings{.proxy = proxy});
    }

private:
    TemporaryFolder _folder;
};

/// The groups as tables of Markdown, and their counts.
struct Report {
    int cases = 0;
    int accepted = 0;
    int differing = 0;
    std::string tables;

    void begin(const std::string& rule) {
        tables += '\n' + rule +
                  "\n\n| Case | Expected | Seen | OpenSSL alone |\n| --- | --- | --- | --- |\n";
    }

    void add(const CertificateCase& each, const std::string& expected, const std::string& seen,
             const std::string& alone) {
        ++cases;
        accepted += seen == acceptance ? 1 : 0;
        differing += (seen == acceptance) == (alone == acceptance) ? 0 : 1;
        tables += "| " + each.name + " | " + expected + " | " + seen + " | " + alone + " |\n";
    }

    std::string text() const {
        return std::to_string(cases) + " cases: " + std::to_string(accepted) + " accepted, " +
               std::to_string(cases - accepted) + " refused; OpenSSL alone says otherwise of " +
               std::to_string(differing) + ".\n" + tables;
    }
};

TEST_F(CertificateMatrix, EachIsAcceptedOrRefusedByItsRule) {
    Report report;
    for (const CertificateGroup& group :
         {namesOfHosts(), wildcards(), addresses(), commonNames(), dates(), usages(), extensions(),
          signatures(), issuers(), nameConstraints(), pins(), ordersOfChains(), crossSignatures(),
          systemStore()}) {
        report.begin(group.rule);
        for (const CertificateCase& each : group.cases) {
            SCOPED_TRACE(group.rule + ' ' + each.name);
            const std::string expected = each.isAccepted ? acceptance : refusal;
            const std::string seen = seenBy(each);
            EXPECT_EQ(seen, expected);
            report.add(each, expected, seen, verdictOfOpenSSL(each));
        }
    }
    expectGeneratedBlock(KELO_RELIABILITY_PAGE, "certificates", report.text());
}

} // namespace

} // namespace KeloAPI::testing
