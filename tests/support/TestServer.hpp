#pragma once

#include "TestCertificates.hpp"

#include <httplib.h>
#undef DELETE // the resolver's, which the server brings along

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace KeloAPI::testing {

/// A small HTTP server inside the test, on a free port of 127.0.0.1.
class TestServer {
public:
    /// Over TLS, with this certificate.
    explicit TestServer(const TestCertificate& certificate, std::size_t threads = 16);
    /// Without TLS.
    explicit TestServer(std::size_t threads = 16);
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;
    ~TestServer();

    /// Add routes here, then `start`.
    httplib::Server& routes() { return *_server; }
    /// A route that serves this to a GET.
    void serve(const std::string& path, const std::string& content);
    void start();

    int port() const { return _port; }
    std::string url(const std::string& path, const std::string& host = "localhost") const;

    /// How many requests have reached a route or missed one.
    int requests() const { return _requests; }
    /// How many connections they came over.
    std::size_t connections() const;

private:
    void prepare(std::size_t threads);

    std::unique_ptr<httplib::Server> _server;
    std::string _scheme;
    int _port = 0;
    std::thread _thread;
    std::atomic<int> _requests = 0;
    mutable std::mutex _mutex;
    std::set<int> _clientPorts;
};

} // namespace KeloAPI::testing
