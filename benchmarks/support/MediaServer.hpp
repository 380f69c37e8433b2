#pragma once

#include "tests/support/Nginx.hpp"
#include "tests/support/TestCertificates.hpp"

#include <KeloAPI/http/ServerTrustPolicy.hpp>

#include <string>

namespace KeloBenchmark {

/// A server of files over TLS and HTTP/2 on loopback, and what a client needs to trust it.
class MediaServer {
public:
    /// Throws where there is no server to be had.
    MediaServer();

    /// Serves a file of random bytes.
    void add(const std::string& name, std::size_t bytes) const;
    /// Serves a file of this content.
    void addContent(const std::string& name, const std::string& content) const;

    std::string url(const std::string& name) const { return _server.url("/files/" + name); }
    /// The same file from where HTTP/1.1 is all that the server speaks.
    std::string serialUrl(const std::string& name) const {
        return _server.serialUrl("/files/" + name);
    }
    /// Where bodies go that the service would take.
    std::string uploadUrl(const std::string& name) const {
        return _server.url("/upload/longform-videos/" + name);
    }
    /// Host and port.
    std::string authority() const { return _server.url("").substr(std::string("https://").size()); }
    /// The server's certificate as a file.
    std::string certificatePath() const;
    KeloAPI::ServerTrustPolicyManager trust() const;

private:
    KeloAPI::testing::TestCertificate _certificate;
    KeloAPI::testing::Nginx _server;
};

} // namespace KeloBenchmark
