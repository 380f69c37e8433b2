#include "RawServer.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <stdexcept>

namespace KeloAPI::testing {

namespace {

std::size_t contentLength(std::string head) {
    std::transform(head.begin(), head.end(), head.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto at = head.find("\r\ncontent-length:");
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + 17));
}

} // namespace

std::string RawConnection::read(std::size_t most) {
    std::string bytes(most, '\0');
    const auto size = ::recv(_socket, bytes.data(), most, 0);
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

std::string RawConnection::readRequest() {
    while (true) {
        const auto end = _read.find("\r\n\r\n");
        if (end != std::string::npos) {
            const std::size_t whole = end + 4 + contentLength(_read.substr(0, end + 2));
            if (_read.size() >= whole) {
                std::string request = _read.substr(0, whole);
                _read.erase(0, whole);
                return request;
            }
        }
        const std::string more = read(65536);
        if (more.empty()) {
            return {};
        }
        _read += more;
    }
}

bool RawConnection::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const auto size = ::send(_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (size <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

void RawConnection::waitForClose() {
    while (!read(65536).empty()) {
    }
}

void RawConnection::reset() const {
    const linger abrupt{1, 0};
    ::setsockopt(_socket, SOL_SOCKET, SO_LINGER, &abrupt, sizeof abrupt);
}

RawServer::RawServer(Handler handler)
    : _handler(std::move(handler))
    , _listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(_listener, generic, size) != 0 || ::listen(_listener, 128) != 0 ||
        ::getsockname(_listener, generic, &size) != 0) {
        throw std::runtime_error("the test server cannot listen");
    }
    _port = ntohs(address.sin_port);
    _acceptor = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    ::shutdown(_listener, SHUT_RDWR);
    _acceptor.join();
    {
        const std::lock_guard lock(_mutex);
        for (const int socket : _sockets) {
            ::shutdown(socket, SHUT_RDWR);
        }
    }
    for (std::thread& thread : _threads) {
        thread.join();
    }
    ::close(_listener);
}

void RawServer::accept() {
    while (true) {
        const int socket = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0 && errno == EMFILE) {
            continue; // a test of that shortage, which passes
        }
        if (socket < 0) {
            return;
        }
        ++_connections;
        const std::lock_guard lock(_mutex);
        _sockets.push_back(socket);
        _threads.emplace_back([this, socket] {
            RawConnection connection(socket);
            _handler(connection);
            const std::lock_guard closing(_mutex);
            std::erase(_sockets, socket);
            ::close(socket);
        });
    }
}

std::string RawServer::url(const std::string& path, const std::string& scheme) const {
    return scheme + "://127.0.0.1:" + std::to_string(_port) + path;
}

} // namespace KeloAPI::testing
