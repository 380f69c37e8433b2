#pragma once

#include "Process.hpp"
#include "TemporaryFolder.hpp"
#include "TestCertificates.hpp"

#include <filesystem>
#include <memory>
#include <string>

namespace KeloAPI::testing {

/// An nginx of its own on loopback, with HTTP/2, as a child of the test in a temporary folder.
///
/// /quick answers at once, /slow for about a second, /stalling begins and then sends next to
/// nothing, /moved redirects to /quick; /files takes PUT and GET; /upload takes any body whole and
/// answers as the service does where it has nothing to tell. Answers name the protocol and the
/// connection in X-Protocol and X-Connection. A second port serves the same over HTTP/1.1 alone.
class Nginx {
public:
    static bool isInstalled();

    explicit Nginx(const TestCertificate& certificate);

    /// The folder that /files serves.
    std::filesystem::path files() const { return _folder.path("files"); }
    std::string url(const std::string& path) const;
    /// Where HTTP/1.1 is all that the server speaks.
    std::string serialUrl(const std::string& path) const;
    const std::string& slowBody() const { return _slowBody; }

private:
    TemporaryFolder _folder;
    int _port = 0;
    int _serialPort = 0;
    std::string _slowBody = std::string(20'000, 's');
    std::unique_ptr<Process> _process;
};

} // namespace KeloAPI::testing
