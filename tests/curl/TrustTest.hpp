#pragma once

#include "support/TemporaryFile.hpp"
#include "support/TestServer.hpp"
#include "TransportTest.hpp"

namespace KeloAPI::testing {

/// The server is "localhost" and "127.0.0.1" alike: two hosts for one place.
class TrustTest : public TransportTest {
protected:
    void TearDown() override { unsetenv("SSL_CERT_FILE"); }

    void serve(const TestCertificate& certificate) {
        server = std::make_unique<TestServer>(certificate);
        server->routes().Get("/", [](const httplib::Request&, httplib::Response& response) {
            response.set_content("served", "text/plain");
        });
        server->routes().Get("/away", [this](const httplib::Request&, httplib::Response& response) {
            response.set_redirect(target);
        });
        server->routes().Post("/", [](const httplib::Request&, httplib::Response& response) {
            response.set_content("taken", "text/plain");
        });
        server->routes().Post("/away",
                              [this](const httplib::Request&, httplib::Response& response) {
                                  response.set_redirect(target, 307);
                              });
        server->start();
    }

    /// Lets every transport made from now on find this authority in the system's store.
    void trustBySystem(const TestCertificate& authority) {
        _systemStore = std::make_unique<TemporaryFile>(authority.pem());
        setenv("SSL_CERT_FILE", _systemStore->path().c_str(), 1);
    }

    std::unique_ptr<TestServer> server;
    std::string target;

private:
    std::unique_ptr<TemporaryFile> _systemStore;
};

} // namespace KeloAPI::testing
