#include "service/http/Server.hpp"

#include "service/http/Connection.hpp"

#include <unistd.h>

#include <algorithm>
#include <ctime>

namespace KeloService {
namespace {

/// The engine refuses descriptors beyond select()'s limit; stay well below it.
constexpr std::uint64_t mostOpenConnections = 900;
constexpr std::size_t mostRequestsPerConnection = 1000000000;
constexpr std::time_t announcedKeepAliveSeconds = 75;

} // namespace

namespace {

/// Leaves gzip alone of the encodings that the client takes: the library prefers another one, at a
/// setting that takes a third of a second for a large page.
void narrowEncodings(httplib::Headers& headers) {
    const auto accepted = headers.find("Accept-Encoding");
    if (accepted == headers.end()) {
        return;
    }
    const bool gzip = accepted->second.find("gzip") != std::string::npos;
    accepted->second = gzip ? "gzip" : "identity";
}

} // namespace

/// The HTTP library's parser and writer, without its own sockets, threads and routing.
class HttpEngine : public httplib::Server {
public:
    explicit HttpEngine(const Handler& handler) {
        Get("/", handler);
        Post("/", handler);
        Put("/", handler);
        Patch("/", handler);
        Delete("/", handler);
        Options("/", handler);
        set_keep_alive_max_count(mostRequestsPerConnection);
        set_keep_alive_timeout(announcedKeepAliveSeconds);
    }

    /// Serves one request; false when the connection is to end.
    bool serveOne(Connection& connection) {
        bool asked = false;
        const bool served =
            process_request(connection, false, asked, [&connection](httplib::Request& request) {
                request.ssl = connection.socketWithTls().ssl();
                // Routing happens on the target as it was sent; the library's own routing, which
                // would match regular expressions against it, shall see the one path it knows.
                request.path.assign(1, '/');
                // Nor shall it take forms apart, or limit their size: bodies are the routes'
                // matter.
                request.headers.erase("Content-Type");
                // Ranges are the routes' matter, too.
                request.ranges.clear();
                narrowEncodings(request.headers);
            });
        return served && !asked;
    }
};

Server::Server(const std::string& address, int port, SslContext context, const Router& router,
               RequestLog& log, FaultScript& faults)
    : listener_(address, port)
    , context_(std::move(context))
    , router_(router)
    , log_(log)
    , faults_(faults)
    , engine_(std::make_unique<HttpEngine>(
          [this](const httplib::Request& engineRequest, httplib::Response& response) {
              Connection& connection = Connection::of(engineRequest);
              Request request = parseHead(connection.recorder().head());
              request.connection = connection.number();
              request.body = engineRequest.body;
              const Answer answer = this->answer(connection, request);
              if (answer.atMediaRate) {
                  connection.limit(mediaRate_);
              }
              response.status = answer.status;
              for (const auto& [name, value] : answer.headers) {
                  response.set_header(name, value);
              }
              response.set_content(answer.body, answer.contentType);
          })) {}

Server::~Server() {
    stop();
}

void Server::start() {
    acceptor_ = std::thread([this] { acceptLoop(); });
}

void Server::stop() {
    if (stopping_.exchange(true)) {
        return;
    }
    listener_.stop();
    if (acceptor_.joinable()) {
        acceptor_.join();
    }
    {
        const std::lock_guard lock(mutex_);
        for (const Served& served : served_) {
            if (served.connection) {
                served.connection->socketWithTls().wake();
            }
        }
    }
    // Nothing adds to the list any more, and the serving threads never change it.
    for (Served& served : served_) {
        served.thread.join();
    }
    served_.clear();
}

ConnectionCounts Server::counts() const {
    const std::lock_guard lock(mutex_);
    return counts_;
}

void Server::acceptLoop() {
    for (int descriptor = listener_.accept(); descriptor >= 0; descriptor = listener_.accept()) {
        joinFinished();
        startServing(descriptor);
    }
}

void Server::startServing(int descriptor) {
    const std::lock_guard lock(mutex_);
    ++counts_.accepted;
    if (counts_.open == mostOpenConnections) {
        ::close(descriptor);
        return;
    }
    ++counts_.open;
    Served& served = served_.emplace_back();
    served.connection =
        std::make_unique<Connection>(descriptor, context_.get(), counts_.accepted,
                                     [this](Connection& connection) { logUnrouted(connection); });
    served.thread = std::thread([this, &served] { serve(served); });
}

void Server::serve(Served& served) {
    Connection& connection = *served.connection;
    if (connection.socketWithTls().handshake()) {
        {
            const std::lock_guard lock(mutex_);
            ++counts_.secured;
        }
        bool more = true;
        while (more && !stopping_) {
            connection.startRequest();
            more = engine_->serveOne(connection);
            connection.finishAnswer();
            more = more && connection.isOpen() && !connection.wasUnrouted();
        }
        connection.socketWithTls().closeOrderly();
    }
    const std::lock_guard lock(mutex_);
    --counts_.open;
    served.connection.reset();
    served.done = true;
}

void Server::joinFinished() {
    std::list<Served> finished;
    {
        const std::lock_guard lock(mutex_);
        for (auto at = served_.begin(); at != served_.end();) {
            const auto next = std::next(at);
            if (at->done) {
                finished.splice(finished.end(), served_, at);
            }
            at = next;
        }
    }
    for (Served& served : finished) {
        served.thread.join();
    }
}

Answer Server::answer(Connection& connection, const Request& request) {
    connection.startAnswer();
    if (!request.isControl()) {
        Request logged = request;
        const RequestRecorder& recorder = connection.recorder();
        // The engine has undone the chunks; everything else is logged as it was on the wire.
        logged.body = recorder.isChunked() ? request.body.substr(0, RequestRecorder::keptBodyBytes)
                                           : recorder.body();
        log_.add(logged, recorder.isChunked() ? request.body.size() : recorder.bodyBytes());
        const std::lock_guard lock(mutex_);
        connection.countUse(counts_.used);
    }
    const auto taken = faults_.take(request);
    if (!taken) {
        return router_.answer(request);
    }
    if (const auto* fault = std::get_if<AnswerFault>(&taken->action())) {
        taken->countFired();
        return fault->answer;
    }
    if (const auto* fault = std::get_if<DelayFault>(&taken->action())) {
        taken->countFired();
        connection.socketWithTls().waitWhileConnected(fault->time);
        return router_.answer(request);
    }
    connection.arm(std::get<WireFault>(taken->action()), [fault = *taken] { fault.countFired(); });
    return router_.answer(request);
}

void Server::logUnrouted(Connection& connection) {
    if (connection.recorder().isEmpty()) {
        return;
    }
    Request request = parseHead(connection.recorder().head());
    request.connection = connection.number();
    log_.add(request, connection.recorder().bodyBytes());
}

} // namespace KeloService
