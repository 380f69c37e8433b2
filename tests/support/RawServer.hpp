#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <deque>
#include <functional>
#include <list>
#include <memory>
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

/// What a `RawServer` has read. It keeps the last requests only, so that memory can be measured.
class RequestLog {
public:
    explicit RequestLog(std::size_t kept = 500)
        : _kept(kept) {}

    void add(std::string request);
    int count() const;
    std::vector<std::string> last() const;

private:
    const std::size_t _kept;
    mutable std::mutex _mutex;
    int _count = 0;
    std::deque<std::string> _last;
};

/// One connection of a `RawServer`.
class RawConnection {
public:
    using Session = std::unique_ptr<SSL, decltype(&SSL_free)>;

    /// With TLS where there is a session.
    RawConnection(int socket, Session session, RequestLog& log);

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
    /// Goes on over TLS, as behind CONNECT; false when the handshake fails.
    bool startTLS(SSL_CTX* context);
    int socket() const { return _socket; }
    SSL* session() const { return _session.get(); }

private:
    int _socket;
    Session _session;
    RequestLog& _log;
    std::string _read;
};

/// A server inside the test without manners of its own: each connection to a free port of 127.0.0.1
/// is handed to `handler` on a thread.
class RawServer {
public:
    using Handler = std::function<void(RawConnection&)>;

    explicit RawServer(Handler handler);
    /// Over TLS: only connections whose handshake succeeds are handed on.
    RawServer(std::shared_ptr<SSL_CTX> context, Handler handler);
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    /// Closes the connections under the handlers and waits for them.
    ~RawServer();

    int port() const { return _port; }
    std::string url(const std::string& path, const std::string& scheme = "http") const;
    std::string secureUrl(const std::string& path, const std::string& host = "localhost") const;
    /// How many were handed to the handler.
    int connections() const { return _connections; }
    /// How many `readRequest` has read.
    int requests() const { return _log.count(); }
    /// The last of those, as they were read.
    std::vector<std::string> received() const { return _log.last(); }

private:
    struct Served {
        int socket = -1;
        std::thread thread;
        bool isOver = false;
    };

    void accept();
    void serve(Served& served);

    Handler _handler;
    std::shared_ptr<SSL_CTX> _context;
    int _listener = -1;
    int _port = 0;
    std::atomic<int> _connections = 0;
    RequestLog _log;
    std::mutex _mutex;
    std::list<Served> _served;
    std::thread _acceptor;
};

// Handlers of a `RawServer`.

/// Answers every request alike.
RawServer::Handler answeringAll(std::string response);
/// Answers the first request and closes.
RawServer::Handler answeringOnce(std::string response);
/// Answers the first request so, and then lets the client wait.
RawServer::Handler answeringAndWaiting(std::string response);
/// Lets the client wait.
RawServer::Handler keepingSilent();
/// Does not even read, until the server goes.
RawServer::Handler keepingDeaf();

} // namespace KeloAPI::testing
