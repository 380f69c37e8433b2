#include "TestCertificates.hpp"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace KeloAPI::testing {

namespace {

void check(bool ok, const char* what) {
    if (!ok) {
        throw std::runtime_error(std::string("cannot make a test certificate: ") + what);
    }
}

void addExtension(X509* certificate, X509* issuer, const std::string& name,
                  const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf(nullptr, &context, name.c_str(), value.c_str());
    check(extension != nullptr, value.c_str());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

void setSerial(X509* certificate) {
    std::uint64_t serial = 0;
    check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1, "serial");
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1U);
}

std::shared_ptr<EVP_PKEY> newKey(const std::string& kind) {
    const std::string rsa = "RSA-";
    EVP_PKEY* key = kind.starts_with(rsa) ? EVP_RSA_gen(std::stoul(kind.substr(rsa.size())))
                    : kind == "Ed25519"   ? EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")
                                          : EVP_EC_gen(kind.c_str());
    check(key != nullptr, kind.c_str());
    return {key, EVP_PKEY_free};
}

void addExtensions(X509* certificate, X509* issuer, const CertificateWish& wish) {
    const std::string constraints =
        wish.basicConstraints.value_or(wish.authority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    if (!constraints.empty()) {
        addExtension(certificate, issuer, "basicConstraints", constraints);
    }
    if (!wish.names.empty()) {
        addExtension(certificate, issuer, "subjectAltName", wish.names);
    }
    for (const auto& [name, value] : wish.extensions) {
        addExtension(certificate, issuer, name, value);
    }
}

} // namespace

TestCertificate TestCertificate::make(const CertificateWish& wish, const TestCertificate* issuer,
                                      std::shared_ptr<EVP_PKEY> key) {
    TestCertificate made;
    made._key = std::move(key);
    made._x509.reset(X509_new(), X509_free);
    check(made._x509 != nullptr, "certificate");
    X509* x509 = made.x509();
    X509_set_version(x509, wish.version - 1);
    setSerial(x509);
    X509_gmtime_adj(X509_getm_notBefore(x509), wish.notBefore.count());
    X509_gmtime_adj(X509_getm_notAfter(x509), wish.notAfter.count());
    X509_set_pubkey(x509, made.key());
    if (!wish.commonName.empty()) {
        X509_NAME_add_entry_by_txt(X509_get_subject_name(x509), "CN", MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char*>(wish.commonName.c_str()),
                                   -1, -1, 0);
    }
    X509* signer = issuer == nullptr ? x509 : issuer->x509();
    X509_set_issuer_name(x509, X509_get_subject_name(signer));
    if (wish.version == 3) {
        addExtensions(x509, signer, wish);
    }
    check(X509_sign(x509, issuer == nullptr ? made.key() : issuer->key(),
                    EVP_get_digestbyname(wish.digest.c_str())) > 0,
          "signature");
    return made;
}

TestCertificate TestCertificate::selfSigned(const CertificateWish& wish) {
    return make(wish, nullptr, newKey(wish.key));
}

TestCertificate TestCertificate::authority(const std::string& name) {
    CertificateWish wish;
    wish.commonName = name;
    wish.names.clear();
    wish.authority = true;
    return selfSigned(wish);
}

TestCertificate TestCertificate::issue(const CertificateWish& wish) const {
    return make(wish, this, newKey(wish.key));
}

TestCertificate TestCertificate::certify(const TestCertificate& holder,
                                         const CertificateWish& wish) const {
    return make(wish, this, holder._key);
}

TestCertificate TestCertificate::withChangedSignature() const {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509(x509(), &bytes);
    check(size > 0, "DER");
    bytes[size - 1] ^= 1U;
    const unsigned char* from = bytes;
    TestCertificate changed = *this;
    changed._x509.reset(d2i_X509(nullptr, &from, size), X509_free);
    OPENSSL_free(bytes);
    check(changed._x509 != nullptr, "changed certificate");
    return changed;
}

Certificate TestCertificate::certificate() const {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509(x509(), &bytes);
    check(size > 0, "DER");
    const std::string der(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    OPENSSL_free(bytes);
    return *Certificate::fromDER(Data(der));
}

std::shared_ptr<SSL_CTX>
TestCertificate::serverContext(const std::vector<TestCertificate>& others) const {
    std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    SSL_CTX_set_security_level(context.get(), 0);
    check(SSL_CTX_use_certificate(context.get(), x509()) == 1 &&
              SSL_CTX_use_PrivateKey(context.get(), key()) == 1,
          "TLS context");
    for (const TestCertificate& each : others) {
        check(SSL_CTX_add1_chain_cert(context.get(), each.x509()) == 1, "chain");
    }
    return context;
}

std::string TestCertificate::keyPem() const {
    BIO* bio = BIO_new(BIO_s_mem());
    PEM_write_bio_PrivateKey(bio, key(), nullptr, nullptr, 0, nullptr, nullptr);
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(bio, &bytes);
    std::string text(bytes, static_cast<std::size_t>(size));
    BIO_free(bio);
    return text;
}

} // namespace KeloAPI::testing
