#include "service/http/Server.hpp"

#include "service/http/Connection.hpp"
#include "service/http/Sha256.hpp"

#include <unistd.h>

#include <algorithm>
#include <ctime>

namespace KeloService {
namespace {

/// The engine refuses descriptors beyond select()'s limit; stay well below it.
constexpr std::uint64_t mostOpenConnections = 900;
constexpr std::size_t mostRequestsPerConnection = 1000000000;
constexpr std::time_t announcedKeepAliveSeconds = 75;

/// What the log keeps of a body that a route takes as it arrives.
constexpr std::size_t keptStreamBytes = std::size_t{64} << 10;

Request requestOf(const Connection& connection) {
    Request request = parseHead(connection.recorder().head());
    request.connection = connection.number();
    return request;
}

/// Makes the engine's answer of a route's.
void fill(httplib::Response& response, const Request& request, const Answer& answer,
          Connection& connection, const SendRate& mediaRate) {
    if (answer.atMediaRate) {
        connection.limit(mediaRate);
    }
    response.status = answer.status;
    for (const auto& [name, value] : answer.headers) {
        response.set_header(name, value);
    }
    if (!answer.stream) {
        response.set_content(answer.body, answer.contentType);
        return;
    }
    // The engine's own way for such bodies gives up at once: it has no socket that listens.
    response.set_header("Content-Type", answer.contentType);
    response.set_header("Content-Length", std::to_string(answer.stream->bytes));
    if (request.method != "HEAD") {
        connection.sendAfterHead(*answer.stream);
    }
}

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
    HttpEngine(const Handler& handler, const HandlerWithContentReader& streamHandler,
               const Router& router)
        : router_(router) {
        Get("/", handler);
        Post("/", handler);
        Put("/", handler);
        Patch("/", handler);
        Delete("/", handler);
        Options("/", handler);
        Put("/stream", streamHandler);
        set_keep_alive_max_count(mostRequestsPerConnection);
        set_keep_alive_timeout(announcedKeepAliveSeconds);
    }

    /// Serves one request; false when the connection is to end.
    bool serveOne(Connection& connection) {
        bool asked = false;
        const bool served =
            process_request(connection, false, asked, [&](httplib::Request& request) {
                request.ssl = connection.socketWithTls().ssl();
                // Routing happens on the target as it was sent; the library's own routing, which
                // would match regular expressions against it, shall see the paths it knows.
                request.path = takesStream(connection, request.method) ? "/stream" : "/";
                // Nor shall it take forms apart, or limit their size: bodies are the routes'
                // matter.
                request.headers.erase("Content-Type");
                // Ranges are the routes' matter, too.
                request.ranges.clear();
                narrowEncodings(request.headers);
            });
        return served && !asked;
    }

private:
    bool takesStream(const Connection& connection, const std::string& method) const {
        return method == "PUT" && router_.takesStream(parseHead(connection.recorder().head()));
    }

    const Router& router_;
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
              Request request = requestOf(connection);
              request.body = engineRequest.body;
              fill(response, request, answer(connection, request), connection, mediaRate_);
          },
          [this](const httplib::Request& engineRequest, httplib::Response& response,
                 const httplib::ContentReader& reader) {
              Connection& connection = Connection::of(engineRequest);
              const auto source = [&reader](const RequestBody::Take& take) {
                  return reader([&take](const char* bytes, std::size_t count) {
                      return take({bytes, count});
                  });
              };
              const Request request = requestOf(connection);
              fill(response, request, answerStream(connection, request, source), connection,
                   mediaRate_);
          },
          router)) {}

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
            more = connection.sendRest() && more;
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

void Server::countUse(Connection& connection) {
    const std::lock_guard lock(mutex_);
    connection.countUse(counts_.used);
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
        countUse(connection);
    }
    RequestBody none([](const RequestBody::Take&) { return true; });
    return answer(connection, request, none);
}

Answer Server::answerStream(Connection& connection, Request request,
                            const RequestBody::Source& source) {
    connection.startAnswer();
    countUse(connection);
    std::uint64_t bodyBytes = 0;
    Sha256 hash;
    RequestBody body([&](const RequestBody::Take& take) {
        return source([&](std::string_view bytes) {
            bodyBytes += bytes.size();
            hash.add(bytes);
            request.body +=
                bytes.substr(0, keptStreamBytes - std::min(keptStreamBytes, request.body.size()));
            return connection.takeBody(bytes.size(), uploadRate_) && take(bytes);
        });
    });
    // The route shall not mistake the first bytes for all.
    Request withoutBody = request;
    Answer answer = this->answer(connection, withoutBody, body);
    body.skip();
    log_.add(request, bodyBytes, hash.text());
    return answer;
}

Answer Server::answer(Connection& connection, const Request& request, RequestBody& body) {
    const auto taken = faults_.take(request);
    if (!taken) {
        return router_.answer(request, body);
    }
    if (const auto* fault = std::get_if<AnswerFault>(&taken->action())) {
        taken->countFired();
        return fault->answer;
    }
    if (const auto* fault = std::get_if<DelayFault>(&taken->action())) {
        taken->countFired();
        connection.socketWithTls().waitWhileConnected(fault->time);
        return router_.answer(request, body);
    }
    connection.arm(std::get<WireFault>(taken->action()), [fault = *taken] { fault.countFired(); });
    if (!request.body.empty() && !connection.takeBody(0, uploadRate_)) {
        return {};
    }
    return router_.answer(request, body);
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
