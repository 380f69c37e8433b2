#pragma once

#include "tests/support/Nginx.hpp"
#include "tests/support/TestCertificates.hpp"

#include <KeloAPI/platform/http/ServerTrustPolicy.hpp>

#include <filesystem>
#include <string>

namespace KeloBenchmark {

/// A server of files over TLS and HTTP/2 on loopback, and what a client needs to trust it.
class MediaServer {
public:
    /// Throws where there is no server to be had.
    MediaServer();

    /// Serves a file of random bytes.
    void add(const std::string& name, std::size_t bytes) const;

    std::string url(const std::string& name) const { return _server.url("/files/" + name); }
    /// The server's certificate as a file.
    std::string certificatePath() const;
    KeloAPI::ServerTrustPolicyManager trust() const;

private:
    KeloAPI::support::TestCertificate _certificate;
    KeloAPI::support::Nginx _server;
};

/// A folder that goes with the object, in memory where the system has such a place: what is
/// measured is the way through the library, not the disk.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    std::string path(const std::string& name) const { return (_path / name).string(); }
    /// Removes what is in it.
    void empty() const;

private:
    std::filesystem::path _path;
};

} // namespace KeloBenchmark
