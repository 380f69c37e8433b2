#include "service/http/TlsContext.hpp"

#include <openssl/err.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace KeloService {
namespace {

constexpr unsigned char http11[] = {8, 'h', 't', 't', 'p', '/', '1', '.', '1'};

int selectProtocol(SSL* /*ssl*/, const unsigned char** out, unsigned char* outLength,
                   const unsigned char* offered, unsigned int offeredLength, void* /*argument*/) {
    unsigned char* chosen = nullptr;
    if (SSL_select_next_proto(&chosen, outLength, http11, sizeof http11, offered, offeredLength) !=
        OPENSSL_NPN_NEGOTIATED) {
        return SSL_TLSEXT_ERR_NOACK;
    }
    *out = chosen;
    return SSL_TLSEXT_ERR_OK;
}

void requireReadable(const std::string& what, const std::string& file) {
    if (::access(file.c_str(), R_OK) != 0) {
        throw CertificateError("cannot read the " + what + " " + file + ": " +
                               std::strerror(errno));
    }
}

std::string lastReason() {
    const char* reason = ERR_reason_error_string(ERR_peek_last_error());
    ERR_clear_error();
    return reason == nullptr ? "not a PEM file of that kind" : reason;
}

} // namespace

SslContext makeServerContext(const std::string& certificateFile, const std::string& keyFile) {
    requireReadable("certificate", certificateFile);
    requireReadable("key", keyFile);
    SslContext context(SSL_CTX_new(TLS_server_method()));
    if (!context) {
        throw CertificateError("cannot set up TLS: " + lastReason());
    }
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    SSL_CTX_set_alpn_select_cb(context.get(), selectProtocol, nullptr);
    SSL_CTX_set_options(context.get(), SSL_OP_NO_RENEGOTIATION);
    SSL_CTX_set_mode(context.get(), SSL_MODE_AUTO_RETRY);
    ERR_clear_error();
    if (SSL_CTX_use_certificate_chain_file(context.get(), certificateFile.c_str()) != 1) {
        throw CertificateError("the certificate " + certificateFile +
                               " is not usable: " + lastReason());
    }
    // OpenSSL compares the key with the certificate while it loads it, with a reason of its own.
    if (SSL_CTX_use_PrivateKey_file(context.get(), keyFile.c_str(), SSL_FILETYPE_PEM) != 1) {
        throw CertificateError("the key " + keyFile + " is not usable with the certificate " +
                               certificateFile + ": " + lastReason());
    }
    if (SSL_CTX_check_private_key(context.get()) != 1) {
        throw CertificateError("the key " + keyFile + " does not fit the certificate " +
                               certificateFile + ": " + lastReason());
    }
    return context;
}

} // namespace KeloService
