#pragma once

#include "support/TemporaryFolder.hpp"
#include "support/TestServer.hpp"
#include "TransportTest.hpp"

namespace KeloAPI::testing {

/// The server is "localhost" and "127.0.0.1" alike: two hosts for one place.
class TrustTest : public TransportTest {
protected:
    void TearDown() override { unsetenv("SSL_CERT_FILE"); }

    void serve(const TestCertificate& certificate) {
        using httplib::Request;
        using httplib::Response;
        server = std::make_unique<TestServer>(certificate);
        server->serve("/", "served");
        server->routes().Post("/", [](const Request&, Response&) {});
        server->routes().Get(
            "/away", [this](const Request&, Response& response) { response.set_redirect(target); });
        server->routes().Post("/away", [this](const Request&, Response& response) {
            response.set_redirect(target, 307);
        });
        server->start();
    }

    /// Lets every transport made from now on find this authority in the system's store.
    void trustBySystem(const TestCertificate& authority) const {
        setenv("SSL_CERT_FILE", _folder.write("store.pem", authority.pem()).c_str(), 1);
    }

    std::unique_ptr<TestServer> server;
    std::string target;

private:
    TemporaryFolder _folder;
};

} // namespace KeloAPI::testing
