#include "TestServer.hpp"

namespace KeloAPI::testing {

TestServer::TestServer(const TestCertificate& certificate, std::size_t threads)
    : _server(std::make_unique<httplib::SSLServer>(certificate.x509(), certificate.key()))
    , _scheme("https") {
    prepare(threads);
}

TestServer::TestServer(std::size_t threads)
    : _server(std::make_unique<httplib::Server>())
    , _scheme("http") {
    prepare(threads);
}

TestServer::~TestServer() {
    if (_thread.joinable()) {
        _server->stop();
        _thread.join();
    }
}

void TestServer::prepare(std::size_t threads) {
    // Without it every small answer waits for the client's delayed acknowledgement.
    _server->set_tcp_nodelay(true);
    _server->set_keep_alive_max_count(1'000'000);
    _server->set_keep_alive_timeout(2);
    // A connection keeps its thread as long as it is open.
    _server->new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
    _server->set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
        ++_requests;
        const std::lock_guard lock(_mutex);
        _clientPorts.insert(request.remote_port);
        return httplib::Server::HandlerResponse::Unhandled;
    });
    _port = _server->bind_to_any_port("127.0.0.1");
}

void TestServer::serve(const std::string& path, const std::string& content) {
    _server->Get(path, [content](const httplib::Request&, httplib::Response& response) {
        response.set_content(content, "text/plain");
    });
}

void TestServer::start() {
    _thread = std::thread([this] { _server->listen_after_bind(); });
    while (!_server->is_running()) {
        std::this_thread::yield();
    }
}

std::string TestServer::url(const std::string& path, const std::string& host) const {
    return _scheme + "://" + host + ":" + std::to_string(_port) + path;
}

std::size_t TestServer::connections() const {
    const std::lock_guard lock(_mutex);
    return _clientPorts.size();
}

} // namespace KeloAPI::testing
