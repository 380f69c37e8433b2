#pragma once

#include "tests/support/TemporaryFolder.hpp"

#include <unistd.h>

namespace KeloBenchmark {

/// A folder that goes with the object, in memory where the system has such a place: what is
/// measured is the way through the library, not the disk.
class ScratchFolder : public KeloAPI::testing::TemporaryFolder {
public:
    ScratchFolder()
        : TemporaryFolder(access("/dev/shm", W_OK) == 0 ? "/dev/shm"
                                                        : std::filesystem::temp_directory_path()) {}

    /// Removes what is in it.
    void empty() const {
        for (const auto& entry : std::filesystem::directory_iterator(path())) {
            std::filesystem::remove_all(entry);
        }
    }
};

} // namespace KeloBenchmark
