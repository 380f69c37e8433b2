#include "RawServer.hpp"

#include "Loopback.hpp"

#include <KeloAPI/queues/internal/SignalShield.hpp>

#include <netinet/tcp.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

namespace KeloAPI::testing {

namespace {

std::size_t contentLength(std::string head) {
    std::transform(head.begin(), head.end(), head.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto at = head.find("\r\ncontent-length:");
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + 17));
}

} // namespace

std::string okResponse(const std::string& body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string pathOf(const std::string& request) {
    const auto begin = request.find(' ') + 1;
    return request.substr(begin, request.find(' ', begin) - begin);
}

void RequestLog::add(std::string request) {
    const std::lock_guard lock(_mutex);
    ++_count;
    _last.push_back(std::move(request));
    if (_last.size() > _kept) {
        _last.pop_front();
    }
}

int RequestLog::count() const {
    const std::lock_guard lock(_mutex);
    return _count;
}

std::vector<std::string> RequestLog::last() const {
    const std::lock_guard lock(_mutex);
    return {_last.begin(), _last.end()};
}

RawConnection::RawConnection(int socket, Session session, RequestLog& log)
    : _socket(socket)
    , _session(std::move(session))
    , _log(log) {}

std::string RawConnection::read(std::size_t most) {
    std::string bytes(most, '\0');
    const auto size = _session ? SSL_read(_session.get(), bytes.data(), static_cast<int>(most))
                               : ::recv(_socket, bytes.data(), most, 0);
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
                _log.add(request);
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
        const auto size =
            _session ? SSL_write(_session.get(), bytes.data(), static_cast<int>(bytes.size()))
                     : ::send(_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (size <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

void RawConnection::serve(const std::function<std::string(const std::string& request)>& respond) {
    for (std::string request = readRequest(); !request.empty(); request = readRequest()) {
        write(respond(request));
    }
}

void RawConnection::waitForClose() {
    while (!read(65536).empty()) {
    }
}

bool RawConnection::startTLS(SSL_CTX* context) {
    _session.reset(SSL_new(context));
    SSL_set_fd(_session.get(), _socket);
    return SSL_accept(_session.get()) == 1;
}

void RawConnection::reset() const {
    const linger abrupt{1, 0};
    ::setsockopt(_socket, SOL_SOCKET, SO_LINGER, &abrupt, sizeof abrupt);
}

RawServer::RawServer(Handler handler)
    : RawServer(nullptr, std::move(handler)) {}

RawServer::RawServer(std::shared_ptr<SSL_CTX> context, Handler handler)
    : _handler(std::move(handler))
    , _context(std::move(context)) {
    const LoopbackListener listener;
    _listener = listener.socket;
    _port = listener.port;
    // TLS writes to a client that has gone in the plain way: no thread here is to hear of it.
    const SignalShield shield;
    _acceptor = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    ::shutdown(_listener, SHUT_RDWR);
    _acceptor.join();
    {
        const std::lock_guard lock(_mutex);
        for (const Served& each : _served) {
            if (!each.isOver) {
                ::shutdown(each.socket, SHUT_RDWR);
            }
        }
    }
    for (Served& each : _served) {
        each.thread.join();
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
        const std::lock_guard lock(_mutex);
        _served.remove_if([](Served& each) {
            if (each.isOver) {
                each.thread.join();
            }
            return each.isOver;
        });
        Served& served = _served.emplace_back();
        served.socket = socket;
        served.thread = std::thread([this, &served] { serve(served); });
    }
}

void RawServer::serve(Served& served) {
    // Without it, what follows TLS's tickets waits for the client's delayed acknowledgement.
    const int noDelay = 1;
    ::setsockopt(served.socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    RawConnection::Session session(nullptr, &SSL_free);
    if (_context) {
        session.reset(SSL_new(_context.get()));
        SSL_set_fd(session.get(), served.socket);
    }
    if (!session || SSL_accept(session.get()) == 1) {
        ++_connections;
        RawConnection connection(served.socket, std::move(session), _log);
        _handler(connection);
    }
    const std::lock_guard lock(_mutex);
    ::close(served.socket);
    served.isOver = true;
}

std::string RawServer::url(const std::string& path, const std::string& scheme) const {
    return scheme + "://127.0.0.1:" + std::to_string(_port) + path;
}

std::string RawServer::secureUrl(const std::string& path, const std::string& host) const {
    return "https://" + host + ":" + std::to_string(_port) + path;
}

RawServer::Handler answeringAll(std::string response) {
    return [response = std::move(response)](RawConnection& connection) {
        connection.serve([&](const std::string&) { return response; });
    };
}

RawServer::Handler answeringOnce(std::string response) {
    return [response = std::move(response)](RawConnection& connection) {
        connection.readRequest();
        connection.write(response);
    };
}

RawServer::Handler answeringAndWaiting(std::string response) {
    return [answer = answeringOnce(std::move(response))](RawConnection& connection) {
        answer(connection);
        connection.waitForClose();
    };
}

RawServer::Handler keepingSilent() {
    return [](RawConnection& connection) { connection.waitForClose(); };
}

RawServer::Handler keepingDeaf() {
    return [](RawConnection& connection) {
        pollfd end{connection.socket(), 0, 0};
        ::poll(&end, 1, -1);
    };
}

} // namespace KeloAPI::testing
