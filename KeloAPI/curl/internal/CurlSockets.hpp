#pragma once

#include <curl/curl.h>

#include <map>
#include <string>

namespace KeloAPI {

class CurlOptions;

/// The open sockets of a network thread, to be found by the addresses of a connection: libcurl
/// tells which connection a transfer is about to use, but not its socket.
class CurlSockets {
public:
    /// Has the transfer that is set up report the sockets of connections that it opens. This object
    /// must outlive those connections.
    void watch(CurlOptions& options);

    /// Both ends of a connection as one text.
    static std::string ends(const std::string& localAddress, int localPort,
                            const std::string& remoteAddress, int remotePort);
    /// The socket of the connection with these ends; `CURL_SOCKET_BAD` when there is none.
    curl_socket_t find(const std::string& ends);

private:
    static int onOpened(void* self, curl_socket_t socket, curlsocktype purpose) noexcept;
    static int onClosed(void* self, curl_socket_t socket) noexcept;

    /// With the ends of those that were looked at once connected.
    std::map<curl_socket_t, std::string> _open;
};

} // namespace KeloAPI
