#pragma once

#include "Tour.hpp"

#include <stdlib.h>

#include <filesystem>
#include <string>

namespace KeloTour {

/// A folder that goes with the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tour-XXXXXX").string();
        check(mkdtemp(pattern.data()) != nullptr, "there is no temporary directory");
        _path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }

    const std::filesystem::path& path() const { return _path; }

private:
    std::filesystem::path _path;
};

} // namespace KeloTour
