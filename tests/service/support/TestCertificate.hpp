#pragma once

#include <filesystem>
#include <string>

namespace KeloServiceTest {

/// A folder that goes with its content at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }
    /// Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& content) const;

private:
    std::filesystem::path path_;
};

/// Writes a fresh self-signed certificate for "localhost" and 127.0.0.1, and its key.
void writeCertificate(const std::string& certificateFile, const std::string& keyFile);

} // namespace KeloServiceTest
