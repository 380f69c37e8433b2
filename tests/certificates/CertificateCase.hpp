#pragma once

#include "support/TestCertificates.hpp"

#include <string>
#include <vector>

namespace KeloAPI::testing {

using Certificates = std::vector<TestCertificate>;

/// The server that is asked for where a case says nothing else.
inline const std::string usualHost = "api.example.test";

/// A server's certificate, and whether it is to be accepted.
struct CertificateCase {
    std::string name;
    bool isAccepted = false; ///< By the rule of the group.
    TestCertificate leaf;
    /// What is trusted: the pins of the host, or else the system's store.
    Certificates trusted;
    Certificates sentBehind = {}; ///< What the server sends beside its own.
    std::string host = usualHost; ///< As in a URL.
    bool isPinned = true;
};

/// Cases of one rule.
struct CertificateGroup {
    std::string rule;
    std::vector<CertificateCase> cases;
};

/// A certificate of the usual host.
inline CertificateWish serverWish() {
    CertificateWish wish;
    wish.commonName = "a server";
    wish.names = "DNS:" + usualHost;
    return wish;
}

/// One that may sign others.
inline CertificateWish authorityWish(const std::string& name) {
    CertificateWish wish;
    wish.commonName = name;
    wish.names.clear();
    wish.authority = true;
    return wish;
}

/// The wish with one more extension.
inline CertificateWish with(CertificateWish wish, const std::string& name,
                            const std::string& value) {
    wish.extensions.emplace_back(name, value);
    return wish;
}

CertificateGroup namesOfHosts();
CertificateGroup wildcards();
CertificateGroup addresses();
CertificateGroup commonNames();
CertificateGroup dates();
CertificateGroup usages();
CertificateGroup extensions();
CertificateGroup signatures();
CertificateGroup issuers();
CertificateGroup nameConstraints();
CertificateGroup pins();
CertificateGroup ordersOfChains();
CertificateGroup crossSignatures();
CertificateGroup systemStore();

} // namespace KeloAPI::testing
