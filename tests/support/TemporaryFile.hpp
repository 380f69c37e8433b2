#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace KeloAPI::testing {

/// A file with a name of its own that goes with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string_view contents)
        : _path((std::filesystem::temp_directory_path() / "kelo-XXXXXX").string()) {
        ::close(::mkstemp(_path.data()));
        std::ofstream(_path) << contents;
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(_path, ignored);
    }

    const std::string& path() const { return _path; }

private:
    std::string _path;
};

} // namespace KeloAPI::testing
