#include "service/http/Server.hpp"

#include "service/Encoding.hpp"

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

/// Makes the engine's answer of a route's.
void fill(httplib::Response& response, const Answer& answer, Connection& connection,
          const ByteRate& mediaRate) {
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
    if (connection.request().method != "HEAD") {
        connection.sendAfterHead(*answer.stream, mediaRate);
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
    explicit HttpEngine(KeloService::Server& server)
        : server_(server) {
        const Handler held = [&server](const httplib::Request& request,
                                       httplib::Response& response) {
            Connection& connection = Connection::of(request);
            fill(response, server.answerHeld(connection, request.body), connection,
                 server.mediaRate());
        };
        Get("/", held);
        Post("/", held);
        Put("/", held);
        Patch("/", held);
        Delete("/", held);
        Options("/", held);
        Put("/stream", [&server](const httplib::Request& request, httplib::Response& response,
                                 const httplib::ContentReader& reader) {
            Connection& connection = Connection::of(request);
            const auto source = [&reader](const RequestBody::Take& take) {
                return reader([&take](const char* bytes, std::size_t count) {
                    return take({bytes, count});
                });
            };
            fill(response, server.answerStream(connection, source), connection, server.mediaRate());
        });
        set_keep_alive_max_count(mostRequestsPerConnection);
        set_keep_alive_timeout(announcedKeepAliveSeconds);
    }

    /// Serves one request; false when the connection is to end.
    bool serveOne(Connection& connection) {
        bool asked = false;
        const bool served =
            process_request(connection, false, asked, [&](httplib::Request& request) {
                request.ssl = connection.tls().ssl();
                // Routing happens on the target as it was sent; the library's own routing, which
                // would match regular expressions against it, shall see the paths it knows.
                request.path = server_.router_.takesStream(connection.request()) ? "/stream" : "/";
                // Nor shall it take forms apart, or limit their size: bodies are the routes'
                // matter.
                request.headers.erase("Content-Type");
                // Ranges are the routes' matter, too.
                connection.setRanges(request.ranges);
                request.ranges.clear();
                narrowEncodings(request.headers);
            });
        return served && !asked;
    }

private:
    KeloService::Server& server_;
};

Server::Server(const std::string& address, int port, SslContext context, const Router& router)
    : listener_(address, port)
    , context_(std::move(context))
    , router_(router)
    , engine_(std::make_unique<HttpEngine>(*this)) {}

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
                served.connection->tls().wake();
            }
        }
    }
    // Nothing adds to the list any more, and the serving threads never change it.
    for (Served& served : served_) {
        served.thread.join();
    }
    served_.clear();
}

void Server::acceptLoop() {
    for (int descriptor = listener_.accept(); descriptor >= 0; descriptor = listener_.accept()) {
        joinFinished();
        startServing(descriptor);
    }
}

void Server::startServing(int descriptor) {
    const std::uint64_t number = ++counts_.accepted;
    if (counts_.open == mostOpenConnections) {
        ::close(descriptor);
        return;
    }
    ++counts_.open;
    const std::lock_guard lock(mutex_);
    Served& served = served_.emplace_back();
    served.connection =
        std::make_unique<Connection>(descriptor, context_.get(), number,
                                     [this](Connection& connection) { logUnrouted(connection); });
    served.thread = std::thread([this, &served] { serve(served); });
}

void Server::serve(Served& served) {
    Connection& connection = *served.connection;
    if (connection.tls().handshake()) {
        ++counts_.secured;
        bool more = true;
        while (more && !stopping_) {
            connection.startRequest();
            more = engine_->serveOne(connection);
            more = connection.sendRest() && more;
            connection.finishAnswer();
            more = more && connection.isOpen() && !connection.wasUnrouted();
        }
        connection.tls().closeOrderly();
    }
    const std::lock_guard lock(mutex_);
    served.connection.reset();
    --counts_.open;
    served.done = true;
}

void Server::joinFinished() {
    const std::lock_guard lock(mutex_);
    std::erase_if(served_, [](Served& served) {
        const bool done = served.done;
        if (done) {
            served.thread.join();
        }
        return done;
    });
}

void Server::countUse(Connection& connection) {
    if (connection.use()) {
        ++counts_.used;
    }
}

Answer Server::answerHeld(Connection& connection, const std::string& body) {
    connection.startAnswer();
    Request request = connection.request();
    if (!request.isControl()) {
        const RequestRecorder& recorder = connection.recorder();
        // The engine has undone the chunks; everything else is logged as it was on the wire.
        request.body =
            recorder.isChunked() ? body.substr(0, RequestRecorder::keptBodyBytes) : recorder.body();
        log_.add(request, recorder.isChunked() ? body.size() : recorder.bodyBytes());
        countUse(connection);
    }
    request.body = body;
    RequestBody none;
    return answer(connection, request, none);
}

Answer Server::answerStream(Connection& connection, const RequestBody::Source& source) {
    connection.startAnswer();
    countUse(connection);
    const Request request = connection.request();
    Request logged = request;
    std::uint64_t bodyBytes = 0;
    Sha256 hash;
    RequestBody body([&](const RequestBody::Take& take) {
        return source([&](std::string_view bytes) {
            bodyBytes += bytes.size();
            hash.add(bytes);
            logged.body +=
                bytes.substr(0, keptStreamBytes - std::min(keptStreamBytes, logged.body.size()));
            return connection.takeBody(bytes.size(), uploadRate_) && take(bytes);
        });
    });
    Answer answer = this->answer(connection, request, body);
    // What no route wanted goes, so that the next request is found behind it.
    body.read([](std::string_view) { return true; });
    log_.add(logged, bodyBytes, hash.text());
    return answer;
}

Answer Server::answer(Connection& connection, const Request& request, RequestBody& body) {
    const std::shared_ptr<Fault> fault = faults_.take(request);
    if (!fault) {
        return router_.answer(request, body);
    }
    const FaultAction& action = fault->action;
    if (action.kind == FaultAction::Kind::Answer) {
        ++fault->fired;
        return action.answer;
    }
    if (action.kind == FaultAction::Kind::Delay) {
        ++fault->fired;
        connection.tls().waitWhileConnected(action.delay);
        return router_.answer(request, body);
    }
    connection.arm(fault);
    if (!request.body.empty() && !connection.takeBody(0, uploadRate_)) {
        return {};
    }
    return router_.answer(request, body);
}

void Server::logUnrouted(Connection& connection) {
    if (!connection.recorder().head().empty()) {
        log_.add(connection.request(), connection.recorder().bodyBytes());
    }
}

} // namespace KeloService
