#pragma once

#include "service/http/Tls.hpp"

#include <memory>
#include <string>

namespace KeloServiceTest {

/// A TLS connection on which every byte is the test's own, and which tells how it ended.
class RawClient {
public:
    enum class End {
        /// TLS's goodbye.
        Closed,
        /// TCP's goodbye without TLS's.
        Truncated,
        Reset,
        /// Nothing came for the time given to `readAll`.
        Silent,
    };
    struct Received {
        std::string bytes;
        End end = End::Silent;
    };

    explicit RawClient(int port);

    void send(const std::string& bytes);
    /// Reads until the connection ends or nothing came for a while.
    Received readAll(int silentMilliseconds = 5000);
    /// Reads one answer with a Content-Length.
    std::string readAnswer();
    void leave() { ssl_.reset(); }

    bool isConnected() const { return ssl_ != nullptr; }
    std::string protocol() const { return SSL_get_version(ssl_.get()); }
    std::string applicationProtocol() const;

private:
    void setPatience(int milliseconds) const;

    /// Owns the socket, too.
    std::unique_ptr<SSL, KeloService::SslDeleter> ssl_;
};

} // namespace KeloServiceTest
