#include "benchmarks/support/ScratchFolder.hpp"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace KeloBenchmark {

namespace {

constexpr const char* memory = "/dev/shm";

std::filesystem::path scratch() {
    const bool inMemory = access(memory, W_OK) == 0;
    const auto parent =
        inMemory ? std::filesystem::path(memory) : std::filesystem::temp_directory_path();
    std::string pattern = (parent / "kelo-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no folder for the benchmark's files");
    }
    return pattern;
}

} // namespace

ScratchFolder::ScratchFolder()
    : _path(scratch()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

void ScratchFolder::empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(_path)) {
        std::filesystem::remove_all(entry);
    }
}

} // namespace KeloBenchmark
