#pragma once

#include "support/RawServer.hpp"
#include "support/TemporaryFolder.hpp"
#include "TransportTest.hpp"

namespace KeloAPI::testing {

/// The server is "localhost" and "127.0.0.1" alike: two hosts for one place.
class TrustTest : public TransportTest {
protected:
    void TearDown() override {
        unsetenv("SSL_CERT_FILE");
        unsetenv("SSL_CERT_DIR");
    }

    /// Serves /away with a redirect to `target`, and everything else itself.
    void serve(const TestCertificate& certificate) {
        server = std::make_unique<RawServer>(
            certificate.serverContext(), [this](RawConnection& connection) {
                connection.serve([this](const std::string& request) {
                    return pathOf(request) != "/away"
                               ? okResponse("served")
                               : "HTTP/1.1 307 Temporary Redirect\r\nLocation: " + target +
                                     "\r\nContent-Length: 0\r\n\r\n";
                });
            });
    }

    /// Lets every transport made from now on find this authority in the system's store.
    void trustBySystem(const TestCertificate& authority) const {
        setenv("SSL_CERT_FILE", _folder.write("store.pem", authority.pem()).c_str(), 1);
    }

    std::string target;
    std::unique_ptr<RawServer> server;

private:
    TemporaryFolder _folder;
};

} // namespace KeloAPI::testing
