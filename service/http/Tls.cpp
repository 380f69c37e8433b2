#include "service/http/Tls.hpp"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace KeloService {
namespace {

/// How long a connection may stand idle, or take for one read or write.
constexpr timeval patience{75, 0};

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
        throw std::runtime_error("cannot read the " + what + " " + file + ": " +
                                 std::strerror(errno));
    }
}

/// Throws with OpenSSL's own reason unless the call succeeded.
void check(int result, const std::string& problem) {
    if (result != 1) {
        const char* reason = ERR_reason_error_string(ERR_peek_last_error());
        throw std::runtime_error(problem + ": " +
                                 (reason == nullptr ? "not a PEM file of that kind" : reason));
    }
}

} // namespace

SslContext makeServerContext(const std::string& certificateFile, const std::string& keyFile) {
    requireReadable("certificate", certificateFile);
    requireReadable("key", keyFile);
    ERR_clear_error();
    SslContext context(SSL_CTX_new(TLS_server_method()));
    check(context ? 1 : 0, "cannot set up TLS");
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    SSL_CTX_set_alpn_select_cb(context.get(), selectProtocol, nullptr);
    SSL_CTX_set_options(context.get(), SSL_OP_NO_RENEGOTIATION);
    SSL_CTX_set_mode(context.get(), SSL_MODE_AUTO_RETRY);
    check(SSL_CTX_use_certificate_chain_file(context.get(), certificateFile.c_str()),
          "the certificate " + certificateFile + " is not usable");
    // OpenSSL compares the key with the certificate while it loads it, with a reason of its own.
    check(SSL_CTX_use_PrivateKey_file(context.get(), keyFile.c_str(), SSL_FILETYPE_PEM),
          "the key " + keyFile + " is not usable with the certificate " + certificateFile);
    check(SSL_CTX_check_private_key(context.get()),
          "the key " + keyFile + " does not fit the certificate " + certificateFile);
    return context;
}

TlsSocket::TlsSocket(int descriptor, SSL_CTX* context)
    : descriptor_(descriptor)
    , ssl_(SSL_new(context)) {
    const int on = 1;
    setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (ssl_) {
        SSL_set_fd(ssl(), descriptor_);
    }
}

TlsSocket::~TlsSocket() {
    ssl_.reset();
    ::close(descriptor_);
}

bool TlsSocket::handshake() {
    ERR_clear_error();
    open_ = ssl_ && SSL_accept(ssl()) == 1;
    return open_;
}

ssize_t TlsSocket::read(char* buffer, std::size_t size) {
    // The HTTP engine reads heads byte by byte; a call into TLS for each would be the server's
    // largest cost.
    if (unread_.empty()) {
        if (!open_) {
            return -1;
        }
        ERR_clear_error();
        const int got = SSL_read(ssl(), buffer_.data(), static_cast<int>(buffer_.size()));
        if (got <= 0) {
            return SSL_get_error(ssl(), got) == SSL_ERROR_ZERO_RETURN ? 0 : -1;
        }
        unread_ = {buffer_.data(), static_cast<std::size_t>(got)};
    }
    const std::size_t count = unread_.copy(buffer, size);
    unread_.remove_prefix(count);
    return static_cast<ssize_t>(count);
}

bool TlsSocket::write(std::string_view bytes) {
    constexpr std::size_t largest = std::numeric_limits<int>::max();
    while (open_ && !bytes.empty()) {
        ERR_clear_error();
        const int sent =
            SSL_write(ssl(), bytes.data(), static_cast<int>(std::min(bytes.size(), largest)));
        open_ = sent > 0;
        bytes.remove_prefix(open_ ? static_cast<std::size_t>(sent) : 0);
    }
    return open_;
}

void TlsSocket::closeOrderly() {
    if (open_) {
        ERR_clear_error();
        SSL_shutdown(ssl());
        closeAbruptly();
    }
}

void TlsSocket::closeAbruptly() {
    if (open_) {
        ::shutdown(descriptor_, SHUT_WR);
        open_ = false;
    }
}

void TlsSocket::reset() {
    if (open_) {
        waitUntilSent();
        const linger none{1, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        open_ = false;
    }
}

void TlsSocket::waitUntilSent() const {
    // A reset throws away what still lies in the send buffer, and nothing reports that it is empty.
    for (int attempt = 0; attempt < 1000; ++attempt) {
        int unsent = 0;
        if (ioctl(descriptor_, SIOCOUTQ, &unsent) != 0 || unsent == 0 ||
            !waitWhileConnected(std::chrono::milliseconds(1))) {
            return;
        }
    }
}

bool TlsSocket::waitWhileConnected(std::optional<std::chrono::milliseconds> limit) const {
    pollfd watched{descriptor_, POLLRDHUP, 0};
    const int milliseconds = limit ? static_cast<int>(limit->count()) : -1;
    return ::poll(&watched, 1, milliseconds) == 0;
}

void TlsSocket::wake() const {
    ::shutdown(descriptor_, SHUT_RDWR);
}

} // namespace KeloService
