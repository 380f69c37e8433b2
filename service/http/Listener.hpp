#pragma once

#include <string>

namespace KeloService {

/// A listening TCP socket on a loopback address.
class Listener {
public:
    /// `address` is "localhost" or a loopback address of IPv4 or IPv6; port 0 takes any free one.
    /// Throws a std::runtime_error that says why it cannot listen.
    Listener(const std::string& address, int port);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    int port() const { return port_; }
    /// The next connection's descriptor; -1 once `stop` was called.
    int accept() const;
    /// Ends `accept` for good, from any thread.
    void stop() const;

private:
    int socket_ = -1;
    int port_ = 0;
};

} // namespace KeloService
