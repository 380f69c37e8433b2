#pragma once

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace KeloAPI::testing {

// What this process has open and takes.

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// In KiB: "VmRSS" for what it takes now, "VmHWM" for the most that it has taken.
inline long memoryInKiB(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string word;
    long size = 0;
    while (status >> word) {
        if (word == field + ":") {
            status >> size;
        }
    }
    return size;
}

inline std::multiset<std::string> threadNames() {
    std::multiset<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        names.insert(name);
    }
    return names;
}

} // namespace KeloAPI::testing
