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

void addExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
    check(extension != nullptr, value.c_str());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

void setSerial(X509* certificate) {
    std::uint64_t serial = 0;
    check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1, "serial");
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1U);
}

} // namespace

TestCertificate TestCertificate::make(const CertificateWish& wish, const TestCertificate* issuer) {
    TestCertificate made;
    made._key.reset(EVP_EC_gen("P-256"), EVP_PKEY_free);
    made._x509.reset(X509_new(), X509_free);
    check(made._key && made._x509, "key");
    X509* x509 = made.x509();
    X509_set_version(x509, 2);
    setSerial(x509);
    X509_gmtime_adj(X509_getm_notBefore(x509), wish.notBefore.count());
    X509_gmtime_adj(X509_getm_notAfter(x509), wish.notAfter.count());
    X509_set_pubkey(x509, made.key());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(x509), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(wish.commonName.c_str()), -1,
                               -1, 0);
    X509* signer = issuer == nullptr ? x509 : issuer->x509();
    X509_set_issuer_name(x509, X509_get_subject_name(signer));
    addExtension(x509, signer, NID_basic_constraints,
                 wish.authority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    if (!wish.names.empty()) {
        addExtension(x509, signer, NID_subject_alt_name, wish.names);
    }
    check(X509_sign(x509, issuer == nullptr ? made.key() : issuer->key(), EVP_sha256()) > 0,
          "signature");
    return made;
}

TestCertificate TestCertificate::selfSigned(const CertificateWish& wish) {
    return make(wish, nullptr);
}

TestCertificate TestCertificate::authority(const std::string& name) {
    CertificateWish wish;
    wish.commonName = name;
    wish.names.clear();
    wish.authority = true;
    return make(wish, nullptr);
}

TestCertificate TestCertificate::issue(const CertificateWish& wish) const {
    return make(wish, this);
}

Certificate TestCertificate::certificate() const {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509(x509(), &bytes);
    check(size > 0, "DER");
    const std::string der(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    OPENSSL_free(bytes);
    return *Certificate::fromDER(Data(der));
}

std::shared_ptr<SSL_CTX> TestCertificate::serverContext() const {
    std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    check(SSL_CTX_use_certificate(context.get(), x509()) == 1 &&
              SSL_CTX_use_PrivateKey(context.get(), key()) == 1,
          "TLS context");
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
