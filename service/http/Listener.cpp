#include "service/http/Listener.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace KeloService {
namespace {

constexpr int backlog = 512;

union Address {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
};

Address loopbackAddress(const std::string& text, int port) {
    Address address{};
    const auto networkPort = htons(static_cast<std::uint16_t>(port));
    in_addr v4{};
    in6_addr v6{};
    if (inet_pton(AF_INET, text == "localhost" ? "127.0.0.1" : text.c_str(), &v4) == 1 &&
        ntohl(v4.s_addr) >> 24 == IN_LOOPBACKNET) {
        address.v4 = {AF_INET, networkPort, v4, {}};
    } else if (inet_pton(AF_INET6, text.c_str(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6)) {
        address.v6 = {AF_INET6, networkPort, 0, v6, 0};
    } else {
        throw std::runtime_error("cannot listen on " + text + ": not a loopback address");
    }
    return address;
}

} // namespace

Listener::Listener(const std::string& address, int port) {
    Address bound = loopbackAddress(address, port);
    const bool isV4 = bound.any.sa_family == AF_INET;
    socklen_t length = isV4 ? sizeof bound.v4 : sizeof bound.v6;
    socket_ = ::socket(bound.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (::bind(socket_, &bound.any, length) != 0 || ::listen(socket_, backlog) != 0) {
        const std::string reason = errno == EADDRINUSE ? "the port is in use" : strerror(errno);
        ::close(socket_);
        throw std::runtime_error("cannot listen on port " + std::to_string(port) + ": " + reason);
    }
    getsockname(socket_, &bound.any, &length);
    port_ = ntohs(isV4 ? bound.v4.sin_port : bound.v6.sin6_port);
}

Listener::~Listener() {
    ::close(socket_);
}

int Listener::accept() const {
    for (;;) {
        const int accepted = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (accepted >= 0 || errno == EINVAL) {
            return accepted;
        }
        if (errno == EMFILE || errno == ENFILE) {
            // The connection stays in the backlog: give the others a moment to end.
            ::poll(nullptr, 0, 10);
        }
    }
}

void Listener::stop() const {
    ::shutdown(socket_, SHUT_RDWR);
}

} // namespace KeloService
