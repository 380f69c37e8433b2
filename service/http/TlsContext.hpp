#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace KeloService {

/// A certificate or key that cannot be used; the text names the file and what is wrong with it.
class CertificateError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct SslContextDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using SslContext = std::unique_ptr<SSL_CTX, SslContextDeleter>;

/// A server-side context for TLS 1.2 and later that offers "http/1.1" and serves with the given
/// certificate chain and key (PEM files). Throws CertificateError.
SslContext makeServerContext(const std::string& certificateFile, const std::string& keyFile);

} // namespace KeloService
