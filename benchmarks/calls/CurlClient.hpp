#pragma once

#include <cstddef>
#include <string>

namespace KeloBenchmark {

/// A bare loop over libcurl: `calls` requests, `inFlight` of them at a time, each body parsed. At
/// most six connections, as many as the library has. False when one of them fails.
bool callInALoop(const std::string& url, const std::string& certificatePath, int calls,
                 std::size_t inFlight);

} // namespace KeloBenchmark
