#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace KeloAPI::testing {

/// "200 OK" with this body and its length.
std::string okResponse(const std::string& body = "ok");
/// The path that a request asks for.
std::string pathOf(const std::string& request);

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
    /// Answers each request with what `respond` makes of it, until the client has gone.
    void serve(const std::function<std::string(const std::string& request)>& respond);
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

// Handlers of a `RawServer`.

/// Answers every request alike.
RawServer::Handler answeringAll(std::string response);
/// Answers the first request and closes.
RawServer::Handler answeringOnce(std::string response);
/// Lets the client wait.
RawServer::Handler keepingSilent();
/// Does not even read, until the server goes.
RawServer::Handler keepingDeaf();

} // namespace KeloAPI::testing
