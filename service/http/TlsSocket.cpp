#include "service/http/TlsSocket.hpp"

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
#include <cstring>
#include <limits>

namespace KeloService {
namespace {

/// How long a connection may stand idle, or take for one read or write.
constexpr timeval patience{75, 0};

} // namespace

TlsSocket::TlsSocket(int descriptor, SSL_CTX* context)
    : descriptor_(descriptor)
    , ssl_(SSL_new(context)) {
    const int on = 1;
    setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (ssl_ != nullptr) {
        SSL_set_fd(ssl_, descriptor_);
    }
}

TlsSocket::~TlsSocket() {
    SSL_free(ssl_);
    ::close(descriptor_);
}

bool TlsSocket::handshake() {
    ERR_clear_error();
    open_ = ssl_ != nullptr && SSL_accept(ssl_) == 1;
    return open_;
}

ssize_t TlsSocket::read(char* buffer, std::size_t size) {
    // The HTTP engine reads heads byte by byte; a call into TLS for each would be the server's
    // largest cost.
    if (start_ == end_) {
        if (!open_) {
            return -1;
        }
        ERR_clear_error();
        const int got = SSL_read(ssl_, buffer_.data(), static_cast<int>(buffer_.size()));
        if (got <= 0) {
            return SSL_get_error(ssl_, got) == SSL_ERROR_ZERO_RETURN ? 0 : -1;
        }
        start_ = 0;
        end_ = static_cast<std::size_t>(got);
    }
    const std::size_t count = std::min(size, end_ - start_);
    std::memcpy(buffer, buffer_.data() + start_, count);
    start_ += count;
    return static_cast<ssize_t>(count);
}

bool TlsSocket::write(std::string_view bytes) {
    constexpr std::size_t largest = std::numeric_limits<int>::max();
    while (open_ && !bytes.empty()) {
        ERR_clear_error();
        const int sent =
            SSL_write(ssl_, bytes.data(), static_cast<int>(std::min(bytes.size(), largest)));
        if (sent <= 0) {
            open_ = false;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return open_;
}

void TlsSocket::closeOrderly() {
    if (open_) {
        ERR_clear_error();
        SSL_shutdown(ssl_);
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
