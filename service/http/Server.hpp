#pragma once

#include "service/http/Connection.hpp"
#include "service/http/FaultScript.hpp"
#include "service/http/Listener.hpp"
#include "service/http/RequestLog.hpp"
#include "service/http/Router.hpp"
#include "service/http/Tls.hpp"

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace KeloService {

class HttpEngine;

/// Counters of TCP connections since the start.
struct ConnectionCounts {
    std::atomic<std::uint64_t> accepted = 0;
    /// Those whose TLS handshake succeeded.
    std::atomic<std::uint64_t> secured = 0;
    /// Those that carried at least one request that is no control request.
    std::atomic<std::uint64_t> used = 0;
    /// Those that are open now.
    std::atomic<std::uint64_t> open = 0;
};

/// The HTTPS server: one thread per connection, requests logged, faults applied, answers from the
/// router.
class Server {
public:
    /// The router must outlive the server. Throws a std::runtime_error where it cannot listen.
    Server(const std::string& address, int port, SslContext context, const Router& router);
    /// Stops first, when `stop` was not called.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const { return listener_.port(); }
    void start();
    /// Ends all connections, stalled ones too, and waits until their threads are gone.
    void stop();

    const ConnectionCounts& counts() const { return counts_; }
    RequestLog& log() { return log_; }
    FaultScript& faults() { return faults_; }
    /// The limit for bodies that are streamed out; none at first.
    ByteRate& mediaRate() { return mediaRate_; }
    /// The limit at which bodies are read that routes take as they arrive; none at first.
    ByteRate& uploadRate() { return uploadRate_; }

private:
    friend class HttpEngine;
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
    Answer answerHeld(Connection& connection, const std::string& body);
    Answer answerStream(Connection& connection, const RequestBody::Source& source);
    /// The route's answer, or what a fault makes of it.
    Answer answer(Connection& connection, const Request& request, RequestBody& body);
    void logUnrouted(Connection& connection);

    Listener listener_;
    SslContext context_;
    const Router& router_;
    RequestLog log_;
    FaultScript faults_;
    ByteRate mediaRate_ = 0;
    ByteRate uploadRate_ = 0;
    std::unique_ptr<HttpEngine> engine_;
    std::thread acceptor_;
    std::atomic<bool> stopping_ = false;
    std::mutex mutex_;
    std::list<Served> served_;
    ConnectionCounts counts_;
};

} // namespace KeloService
