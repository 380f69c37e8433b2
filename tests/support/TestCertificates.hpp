#pragma once

#include <KeloAPI/http/Certificate.hpp>

#include <openssl/ssl.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

/// What a test wants in a certificate.
struct CertificateWish {
    std::string commonName = "test";
    /// As in OpenSSL's configuration: "DNS:localhost,IP:127.0.0.1"; empty for none.
    std::string names = "DNS:localhost,IP:127.0.0.1";
    /// Counted from now.
    std::chrono::seconds notBefore = -std::chrono::hours(1);
    std::chrono::seconds notAfter = std::chrono::hours(24);
    bool authority = false;
    /// In place of the basic constraints that `authority` stands for, as in OpenSSL's
    /// configuration; empty for none.
    std::optional<std::string> basicConstraints = std::nullopt;
    /// More extensions, by name or object identifier: {"keyUsage", "critical,keyCertSign"}.
    std::vector<std::pair<std::string, std::string>> extensions = {};
    /// 1 is without extensions, whatever is wished.
    int version = 3;
    /// "P-256" and the like for an elliptic curve, "RSA-2048" for RSA with this many bits, or
    /// "Ed25519", which cannot sign others here.
    std::string key = "P-256";
    /// Of the signature.
    std::string digest = "SHA256";
};

/// A certificate with its private key, made in the process and kept in memory.
class TestCertificate {
public:
    static TestCertificate selfSigned(const CertificateWish& wish);
    /// An authority of its own name.
    static TestCertificate authority(const std::string& name = "test authority");
    /// A certificate for `wish`, signed by this one.
    TestCertificate issue(const CertificateWish& wish) const;
    /// The same for a key that is there already: that of `holder`.
    TestCertificate certify(const TestCertificate& holder, const CertificateWish& wish) const;
    /// The same with another bit at the end of its signature.
    TestCertificate withChangedSignature() const;

    Certificate certificate() const;
    std::string pem() const { return certificate().pem(); }
    std::string keyPem() const;

    /// TLS of a server that has this certificate, and sends `others` behind it. It serves weak keys
    /// and signatures, too: a client has to refuse those.
    std::shared_ptr<SSL_CTX> serverContext(const std::vector<TestCertificate>& others = {}) const;

    X509* x509() const { return _x509.get(); }
    EVP_PKEY* key() const { return _key.get(); }

private:
    static TestCertificate make(const CertificateWish& wish, const TestCertificate* issuer,
                                std::shared_ptr<EVP_PKEY> key);

    std::shared_ptr<X509> _x509;
    std::shared_ptr<EVP_PKEY> _key;
};

} // namespace KeloAPI::testing
