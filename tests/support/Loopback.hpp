#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <stdexcept>

namespace KeloAPI::testing {

inline sockaddr_in loopbackAddress(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A socket that listens on a free port of 127.0.0.1.
struct LoopbackListener {
    LoopbackListener() {
        sockaddr_in address = loopbackAddress(0);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket, generic, size) != 0 || ::listen(socket, 512) != 0 ||
            ::getsockname(socket, generic, &size) != 0) {
            throw std::runtime_error("the test server cannot listen");
        }
        port = ntohs(address.sin_port);
    }

    /// Closed by whoever uses it.
    int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port = 0;
};

} // namespace KeloAPI::testing
