#pragma once

#include <openssl/ssl.h>
#include <sys/types.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace KeloService {

struct SslDeleter {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
    void operator()(SSL* ssl) const { SSL_free(ssl); }
};
using SslContext = std::unique_ptr<SSL_CTX, SslDeleter>;

/// A server-side context for TLS 1.2 and later that offers "http/1.1" and serves with the given
/// certificate chain and key (PEM files). Throws a std::runtime_error that names the file and what
/// is wrong with it.
SslContext makeServerContext(const std::string& certificateFile, const std::string& keyFile);

/// One accepted TCP connection with TLS on it. Used by the one thread that serves it, except
/// `wake`, which any thread may call while the object lives.
class TlsSocket {
public:
    /// Takes the descriptor over. `context` must outlive the socket.
    TlsSocket(int descriptor, SSL_CTX* context);
    ~TlsSocket();
    TlsSocket(const TlsSocket&) = delete;
    TlsSocket& operator=(const TlsSocket&) = delete;

    bool handshake();
    /// Bytes read; 0 at a clean end, -1 at any other end.
    ssize_t read(char* buffer, std::size_t size);
    /// False when not all bytes could be handed to the system.
    bool write(std::string_view bytes);

    /// Ends the connection with TLS's and TCP's orderly goodbyes. Nothing can be sent afterwards.
    void closeOrderly();
    /// Ends the connection with TCP's goodbye alone, as a server that died would.
    void closeAbruptly();
    /// Ends the connection with a TCP reset, after the bytes written so far have left.
    void reset();
    /// Waits until the peer has gone, `wake` was called or the time is over (no limit when absent).
    /// True when the connection is still there.
    bool waitWhileConnected(std::optional<std::chrono::milliseconds> limit) const;

    /// Ends every wait, read and write of the serving thread soon.
    void wake() const;

    bool isOpen() const { return open_; }
    int descriptor() const { return descriptor_; }
    SSL* ssl() const { return ssl_.get(); }

private:
    void waitUntilSent() const;

    int descriptor_;
    std::unique_ptr<SSL, SslDeleter> ssl_;
    bool open_ = true;
    std::array<char, 16384> buffer_;
    /// What of the buffer was not yet asked for.
    std::string_view unread_;
};

} // namespace KeloService
