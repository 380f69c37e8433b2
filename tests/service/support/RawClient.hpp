#pragma once

#include "service/http/Tls.hpp"

#include <chrono>
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
        /// Enough came, and then nothing for a while.
        Silent,
    };
    struct Received {
        std::string bytes;
        End end = End::Silent;
    };

    explicit RawClient(int port);

    void send(const std::string& bytes);
    /// Reads until the connection ends; once so many bytes have come, until it falls silent.
    Received readAll(std::size_t enough = std::string::npos);
    /// Reads one answer with a Content-Length.
    std::string readAnswer();
    void leave() { ssl_.reset(); }

    bool isConnected() const { return ssl_ != nullptr; }
    std::string protocol() const { return SSL_get_version(ssl_.get()); }
    std::string applicationProtocol() const;

private:
    void setPatience(std::chrono::milliseconds patience) const;

    /// Owns the socket, too.
    std::unique_ptr<SSL, KeloService::SslDeleter> ssl_;
};

} // namespace KeloServiceTest
