#include <KeloAPI/curl/internal/CurlOptions.hpp>
#include <KeloAPI/curl/internal/CurlSockets.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <new>

namespace KeloAPI {

namespace {

struct SocketEnd {
    std::string address;
    int port = 0;
};

using NameOfSocket = int (*)(int, sockaddr*, socklen_t*);

SocketEnd endOf(curl_socket_t socket, NameOfSocket nameOf) {
    sockaddr_storage storage{};
    socklen_t size = sizeof storage;
    auto* generic = reinterpret_cast<sockaddr*>(&storage);
    if (nameOf(socket, generic, &size) != 0) {
        return {};
    }
    const bool isVersion6 = storage.ss_family == AF_INET6;
    const auto* version6 = reinterpret_cast<const sockaddr_in6*>(&storage);
    const auto* version4 = reinterpret_cast<const sockaddr_in*>(&storage);
    const void* address = isVersion6 ? static_cast<const void*>(&version6->sin6_addr)
                                     : static_cast<const void*>(&version4->sin_addr);
    std::array<char, INET6_ADDRSTRLEN> text{};
    ::inet_ntop(storage.ss_family, address, text.data(), text.size());
    return {text.data(), ntohs(isVersion6 ? version6->sin6_port : version4->sin_port)};
}

} // namespace

void CurlSockets::watch(CurlOptions& options) {
    options.set(CURLOPT_SOCKOPTFUNCTION, &CurlSockets::onOpened);
    options.set(CURLOPT_SOCKOPTDATA, this);
    options.set(CURLOPT_CLOSESOCKETFUNCTION, &CurlSockets::onClosed);
    options.set(CURLOPT_CLOSESOCKETDATA, this);
}

std::string CurlSockets::ends(const std::string& localAddress, int localPort,
                              const std::string& remoteAddress, int remotePort) {
    return localAddress + ' ' + std::to_string(localPort) + ' ' + remoteAddress + ' ' +
           std::to_string(remotePort);
}

curl_socket_t CurlSockets::find(const std::string& ends) {
    for (auto& [socket, known] : _open) {
        if (known.empty()) {
            const SocketEnd remote = endOf(socket, &::getpeername);
            if (remote.port == 0) {
                continue; // not connected yet
            }
            const SocketEnd local = endOf(socket, &::getsockname);
            known = CurlSockets::ends(local.address, local.port, remote.address, remote.port);
        }
        if (known == ends) {
            return socket;
        }
    }
    return CURL_SOCKET_BAD;
}

int CurlSockets::onOpened(void* self, curl_socket_t socket, curlsocktype /*purpose*/) noexcept {
    try {
        static_cast<CurlSockets*>(self)->_open.insert_or_assign(socket, std::string());
        return CURL_SOCKOPT_OK;
    } catch (const std::bad_alloc&) {
        return CURL_SOCKOPT_ERROR;
    }
}

int CurlSockets::onClosed(void* self, curl_socket_t socket) noexcept {
    static_cast<CurlSockets*>(self)->_open.erase(socket);
    return ::close(socket);
}

} // namespace KeloAPI
