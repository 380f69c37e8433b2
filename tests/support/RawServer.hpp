#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace KeloAPI::testing {

/// One connection of a `RawServer`.
class RawConnection {
public:
    explicit RawConnection(int socket)
        : _socket(socket) {}

    /// Reads one request, head and body of a Content-Length; empty when the client has gone.
    std::string readRequest();
    /// What comes next, at most `most` bytes; empty when the client has gone.
    std::string read(std::size_t most);
    /// False when the client has gone.
    bool write(std::string_view bytes) const;
    /// Waits until the client closes.
    void waitForClose();
    /// Closes with a reset where the handler's return closes in peace.
    void reset() const;
    int socket() const { return _socket; }

private:
    int _socket;
    std::string _read;
};

/// A server without manners of its own, for answers that a well-behaved one does not give: each
/// connection to a free port of 127.0.0.1 is handed to `handler` on a thread.
class RawServer {
public:
    using Handler = std::function<void(RawConnection&)>;

    explicit RawServer(Handler handler);
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    /// Closes the connections under the handlers and waits for them.
    ~RawServer();

    int port() const { return _port; }
    std::string url(const std::string& path, const std::string& scheme = "http") const;
    int connections() const { return _connections; }

private:
    void accept();

    Handler _handler;
    int _listener = -1;
    int _port = 0;
    std::atomic<int> _connections = 0;
    std::mutex _mutex;
    std::vector<int> _sockets;
    std::vector<std::thread> _threads;
    std::thread _acceptor;
};

} // namespace KeloAPI::testing
