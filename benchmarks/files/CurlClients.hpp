#pragma once

#include "benchmarks/support/MediaServer.hpp"
#include "benchmarks/support/ScratchFolder.hpp"

#include <string>
#include <vector>

namespace KeloBenchmark {

/// Downloads files one after another over one libcurl handle, each straight into its place. False
/// when one fails.
bool downloadInALoop(const MediaServer& server, const std::vector<std::string>& names,
                     const ScratchFolder& folder);

} // namespace KeloBenchmark
