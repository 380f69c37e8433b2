#pragma once

#include <filesystem>
#include <string>

namespace KeloBenchmark {

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
