#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KeloAPI {

struct DirectoryEntry {
    std::string name;
    /// Seconds since 1970, and nanoseconds of that second: together they do not fit into 64 bits.
    std::pair<std::int64_t, std::int64_t> modified;
};

/// The names in `directory`, in the system's order and without "." and "..". Throws
/// `std::filesystem::filesystem_error` when it cannot be read.
std::vector<std::string> namesIn(const std::string& directory);

/// The entries of `directory` whose names `wanted` takes, in the same order. A name is put behind
/// `directory` as it is, so that brings its own "/" at its end. Throws
/// `std::filesystem::filesystem_error` when the directory cannot be read or one of the entries
/// cannot be examined; links are not followed.
std::vector<DirectoryEntry> entriesOf(const std::string& directory,
                                      const std::function<bool(std::string_view name)>& wanted);

} // namespace KeloAPI
