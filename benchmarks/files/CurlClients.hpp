#pragma once

#include "benchmarks/files/MediaServer.hpp"

#include <string>
#include <vector>

namespace KeloBenchmark {

/// What a program that was run to its end took.
struct Spent {
    bool succeeded = false;
    double processorSeconds = 0;
};

/// Runs a program; its output goes nowhere.
Spent run(const std::vector<std::string>& command);

/// Downloads files one after another over one libcurl handle, each straight into its place. False
/// when one fails.
bool downloadInALoop(const MediaServer& server, const std::vector<std::string>& names,
                     const ScratchFolder& folder);

} // namespace KeloBenchmark
