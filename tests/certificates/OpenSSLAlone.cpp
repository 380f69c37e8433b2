#include "OpenSSLAlone.hpp"

#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <algorithm>

namespace KeloAPI::testing {

namespace {

int securityLevelOfTLS() {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(
        SSL_CTX_new(TLS_client_method()), &SSL_CTX_free);
    return SSL_CTX_get_security_level(context.get());
}

void askForHost(X509_VERIFY_PARAM* parameters, std::string host) {
    std::erase_if(host, [](char c) { return c == '[' || c == ']'; });
    if (X509_VERIFY_PARAM_set1_ip_asc(parameters, host.c_str()) != 1) {
        X509_VERIFY_PARAM_set1_host(parameters, host.c_str(), host.size());
    }
}

} // namespace

std::string verdictOfOpenSSL(const CertificateCase& each) {
    const std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(X509_STORE_new(),
                                                                        &X509_STORE_free);
    for (const TestCertificate& trusted : each.trusted) {
        X509_STORE_add_cert(store.get(), trusted.x509());
    }
    const std::unique_ptr<STACK_OF(X509), void (*)(STACK_OF(X509)*)> sent(
        sk_X509_new_null(), [](STACK_OF(X509) * stack) { sk_X509_free(stack); });
    for (const TestCertificate& other : each.sentBehind) {
        sk_X509_push(sent.get(), other.x509());
    }
    const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> context(
        X509_STORE_CTX_new(), &X509_STORE_CTX_free);
    X509_STORE_CTX_init(context.get(), store.get(), each.leaf.x509(), sent.get());
    X509_STORE_CTX_set_default(context.get(), "ssl_server");
    X509_VERIFY_PARAM* parameters = X509_STORE_CTX_get0_param(context.get());
    // A chain may end with any trusted certificate.
    X509_VERIFY_PARAM_set_flags(parameters, X509_V_FLAG_PARTIAL_CHAIN | X509_V_FLAG_TRUSTED_FIRST);
    X509_VERIFY_PARAM_set_auth_level(parameters, securityLevelOfTLS());
    askForHost(parameters, each.host);
    return X509_verify_cert(context.get()) == 1
               ? "accepted"
               : X509_verify_cert_error_string(X509_STORE_CTX_get_error(context.get()));
}

} // namespace KeloAPI::testing
