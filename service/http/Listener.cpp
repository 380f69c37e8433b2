#include "service/http/Listener.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace KeloService {
namespace {

constexpr int backlog = 512;

struct Address {
    sockaddr_storage storage{};
    socklen_t length = 0;
};

Address loopbackAddress(const std::string& text, int port) {
    Address address;
    const auto networkPort = htons(static_cast<std::uint16_t>(port));
    auto* v4 = reinterpret_cast<sockaddr_in*>(&address.storage);
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&address.storage);
    const std::string number = text == "localhost" ? "127.0.0.1" : text;
    if (inet_pton(AF_INET, number.c_str(), &v4->sin_addr) == 1) {
        if (ntohl(v4->sin_addr.s_addr) >> 24 == IN_LOOPBACKNET) {
            v4->sin_family = AF_INET;
            v4->sin_port = networkPort;
            address.length = sizeof(sockaddr_in);
        }
    } else if (inet_pton(AF_INET6, number.c_str(), &v6->sin6_addr) == 1) {
        if (IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr)) {
            v6->sin6_family = AF_INET6;
            v6->sin6_port = networkPort;
            address.length = sizeof(sockaddr_in6);
        }
    }
    if (address.length == 0) {
        throw ListenError("cannot listen on " + text + ": not a loopback address");
    }
    return address;
}

int boundPort(int descriptor) {
    sockaddr_storage bound{};
    socklen_t length = sizeof bound;
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&bound), &length);
    return ntohs(bound.ss_family == AF_INET6
                     ? reinterpret_cast<const sockaddr_in6*>(&bound)->sin6_port
                     : reinterpret_cast<const sockaddr_in*>(&bound)->sin_port);
}

} // namespace

Listener::Listener(const std::string& address, int port) {
    const Address wanted = loopbackAddress(address, port);
    socket_ = ::socket(wanted.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    stopped_ = eventfd(0, EFD_CLOEXEC);
    const int on = 1;
    setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (::bind(socket_, reinterpret_cast<const sockaddr*>(&wanted.storage), wanted.length) != 0 ||
        ::listen(socket_, backlog) != 0) {
        const std::string reason = errno == EADDRINUSE ? "the port is in use" : strerror(errno);
        ::close(socket_);
        ::close(stopped_);
        throw ListenError("cannot listen on port " + std::to_string(port) + ": " + reason);
    }
    port_ = boundPort(socket_);
}

Listener::~Listener() {
    ::close(socket_);
    ::close(stopped_);
}

int Listener::accept() const {
    for (;;) {
        pollfd watched[] = {{socket_, POLLIN, 0}, {stopped_, POLLIN, 0}};
        if (::poll(watched, 2, -1) < 0) {
            continue;
        }
        if (watched[1].revents != 0) {
            return -1;
        }
        const int accepted = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        if (accepted >= 0) {
            return accepted;
        }
        if (errno == EMFILE || errno == ENFILE) {
            // The connection stays in the backlog: give the others a moment to end, or be stopped.
            pollfd stop{stopped_, POLLIN, 0};
            ::poll(&stop, 1, 10);
        }
    }
}

void Listener::stop() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(stopped_, &one, sizeof one);
}

} // namespace KeloService
