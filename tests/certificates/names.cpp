#include "CertificateCase.hpp"

namespace KeloAPI::testing {

namespace {

/// The names in a certificate, the host that is asked for, and whether they fit.
struct NameCase {
    std::string names;
    std::string host;
    bool isAccepted;
    std::string commonName = "a server";
    std::string called = {}; ///< Where the names cannot be printed.
};

std::vector<CertificateCase> named(const std::vector<NameCase>& table) {
    const auto root = TestCertificate::authority();
    std::vector<CertificateCase> cases;
    for (const NameCase& each : table) {
        CertificateWish wish;
        wish.commonName = each.commonName;
        wish.names = each.names;
        std::string name = each.called;
        if (name.empty()) {
            name = each.names.empty() ? "no alternative names" : '`' + each.names + '`';
        }
        if (each.commonName != "a server") {
            name += each.commonName.empty() ? ", no common name"
                                            : ", common name `" + each.commonName + '`';
        }
        name += ", asked for `" + each.host + '`';
        cases.push_back({name, each.isAccepted, root.issue(wish), {root}, {}, each.host});
    }
    return cases;
}

std::string manyNamesAnd(const std::string& last) {
    std::string names;
    for (int i = 0; i < 100; ++i) {
        names += "DNS:n" + std::to_string(i) + ".example.test,";
    }
    return names + last;
}

} // namespace

CertificateGroup namesOfHosts() {
    const std::string label(63, 'a');
    return {
        "A host has to be named in full; case and a final dot make no difference.",
        named(
            {{"DNS:api.example.test", usualHost, true},
             {"DNS:API.Example.TEST", usualHost, true},
             {"DNS:api.example.test", "API.example.TEST", true},
             {"DNS:other.example.test,DNS:api.example.test", usualHost, true},
             {manyNamesAnd("DNS:api.example.test"), usualHost, true, "a server",
              "the last of 101 names"},
             {manyNamesAnd("DNS:other.test"), usualHost, false, "a server", "none of 101 names"},
             {"DNS:api.example.test", "api.example.test.", true},
             {"DNS:api.example.test.", usualHost, true},
             {"DNS:" + label + ".test", label + ".test", true, "a server", "a label of 63 letters"},
             {"DNS:a_b.example.test", "a_b.example.test", true},
             {"DNS:xn--caf-dma.test", "xn--caf-dma.test", true},
             {"DNS:caf\xC3\xA9.test", "xn--caf-dma.test", false},
             {"DNS:other.example.test", usualHost, false},
             {"DNS:example.test", usualHost, false},
             {"DNS:www.api.example.test", usualHost, false},
             {"DNS:xapi.example.test", usualHost, false},
             {"DNS:pi.example.test", usualHost, false},
             {"DNS:api.example.test.evil.test", usualHost, false},
             {"DNS:api.example.tes", usualHost, false},
             {"DNS:.example.test", usualHost, false},
             {"URI:https://api.example.test/", usualHost, false},
             {"email:api.example.test@example.test", usualHost, false}})};
}

CertificateGroup wildcards() {
    return {"A star stands for one whole label, the first, before two more at least.",
            named({{"DNS:*.example.test", usualHost, true},
                   {"DNS:*.EXAMPLE.test", usualHost, true},
                   {"DNS:*.a.example.test", "api.a.example.test", true},
                   {"DNS:*.example.test", "xn--caf-dma.example.test", true},
                   {"DNS:*.xn--caf-dma.test", "api.xn--caf-dma.test", true},
                   {"DNS:*.example.test", "a_b.example.test", true},
                   {"DNS:*.example.test", "a.api.example.test", false},
                   {"DNS:*.example.test", "example.test", false},
                   {"DNS:*.example.test", "api.example.test.evil.test", false},
                   {"DNS:*.api.example.test", usualHost, false},
                   {"DNS:*.test", "example.test", false},
                   {"DNS:*", usualHost, false},
                   {"DNS:*", "localhost", false},
                   {"DNS:*.", "localhost", false},
                   {"DNS:a*.example.test", usualHost, false},
                   {"DNS:*i.example.test", usualHost, false},
                   {"DNS:a*i.example.test", usualHost, false},
                   {"DNS:api*.example.test", usualHost, false},
                   {"DNS:**.example.test", usualHost, false},
                   {"DNS:api.*.test", usualHost, false},
                   {"DNS:*.*.test", usualHost, false},
                   {"DNS:api.example.*", usualHost, false},
                   {"DNS:xn--*.example.test", "xn--caf-dma.example.test", false},
                   {"DNS:*.0.0.1", "127.0.0.1", false}})};
}

CertificateGroup addresses() {
    return {"An address has to be named as one.",
            named({{"IP:127.0.0.1", "127.0.0.1", true},
                   {"IP:10.0.0.1,IP:127.0.0.1", "127.0.0.1", true},
                   {"IP:::1", "[::1]", true},
                   {"IP:2001:db8::1", "[2001:DB8:0:0:0:0:0:1]", true},
                   {"IP:127.0.0.2", "127.0.0.1", false},
                   {"IP:::2", "[::1]", false},
                   {"IP:0:0:0:0:0:ffff:7f00:1", "127.0.0.1", false},
                   {"IP:127.0.0.1", "localhost", false},
                   {"DNS:127.0.0.1", "127.0.0.1", false},
                   {"DNS:localhost", "127.0.0.1", false},
                   {"URI:https://127.0.0.1/", "127.0.0.1", false}})};
}

CertificateGroup commonNames() {
    auto cases = named({{"", usualHost, true, usualHost},
                        {"", usualHost, true, "*.example.test"},
                        {"email:a@example.test", usualHost, true, usualHost},
                        {"", usualHost, false, "other.example.test"},
                        {"", usualHost, false, "a*.example.test"},
                        {"", usualHost, false, ""},
                        {"DNS:other.example.test", usualHost, false, usualHost},
                        {"DNS:api.example.test", usualHost, true, "other.example.test"},
                        {"DNS:api.example.test", usualHost, true, ""},
                        {"IP:127.0.0.1", usualHost, false, usualHost},
                        {"", "127.0.0.1", true, "127.0.0.1"},
                        {"DNS:other.example.test,IP:127.0.0.2", "127.0.0.1", false, "127.0.0.1"}});
    const auto root = TestCertificate::authority();
    const auto bare = [&](const std::string& commonName, const std::string& names) {
        CertificateWish wish;
        wish.commonName = commonName;
        wish.names.clear();
        return root.issue(with(wish, "subjectAltName", "DER:" + names));
    };
    cases.push_back(
        {"an empty list of names, the common name fits", true, bare(usualHost, "3000"), {root}});
    // A name with a zero byte behind "api.example.test".
    cases.push_back({"`api.example.test` before a zero byte and `.evil.test`",
                     false,
                     bare("a server", "301D821B6170692E6578616D706C652E74657374002E6576696C2E7465"
                                      "7374"),
                     {root}});
    return {"The common name counts only where no host and no address is named; it may be either.",
            cases};
}

} // namespace KeloAPI::testing
