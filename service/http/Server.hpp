#pragma once

#include "service/http/FaultScript.hpp"
#include "service/http/Listener.hpp"
#include "service/http/RequestLog.hpp"
#include "service/http/Router.hpp"
#include "service/http/SendRate.hpp"
#include "service/http/TlsContext.hpp"

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace KeloService {

class Connection;
class HttpEngine;

/// Counters of TCP connections since the start.
struct ConnectionCounts {
    std::uint64_t accepted = 0;
    /// Those whose TLS handshake succeeded.
    std::uint64_t secured = 0;
    /// Those that carried at least one request that is no control request.
    std::uint64_t used = 0;
    /// Those that are open now.
    std::uint64_t open = 0;
};

/// The HTTPS server: one thread per connection, requests logged, faults applied, answers from the
/// router.
class Server {
public:
    /// Everything referred to must outlive the server. Throws ListenError.
    Server(const std::string& address, int port, SslContext context, const Router& router,
           RequestLog& log, FaultScript& faults);
    /// Stops first, when `stop` was not called.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const { return listener_.port(); }
    void start();
    /// Ends all connections, stalled ones too, and waits until their threads are gone.
    void stop();
    ConnectionCounts counts() const;
    /// The limit for answers that ask for it; none at first.
    SendRate& mediaRate() { return mediaRate_; }
    /// The limit at which bodies are read that routes take as they arrive; none at first.
    SendRate& uploadRate() { return uploadRate_; }

private:
    struct Served {
        std::unique_ptr<Connection> connection;
        std::atomic<bool> done = false;
        std::thread thread;
    };

    void acceptLoop();
    void startServing(int descriptor);
    void serve(Served& served);
    void joinFinished();
    void countUse(Connection& connection);
    Answer answer(Connection& connection, const Request& request);
    Answer answer(Connection& connection, const Request& request, RequestBody& body);
    Answer answerStream(Connection& connection, Request request, const RequestBody::Source& source);
    void logUnrouted(Connection& connection);

    Listener listener_;
    SslContext context_;
    const Router& router_;
    RequestLog& log_;
    FaultScript& faults_;
    SendRate mediaRate_;
    SendRate uploadRate_;
    std::unique_ptr<HttpEngine> engine_;
    std::thread acceptor_;
    std::atomic<bool> stopping_ = false;
    mutable std::mutex mutex_;
    std::list<Served> served_;
    ConnectionCounts counts_;
};

} // namespace KeloService
