#pragma once

#include <KeloAPI/base/Export.hpp>

#include <functional>
#include <string_view>

/// The library's few lines about what it does.
namespace KeloAPI::Diagnostics {

/// Takes one line, without its line end. May be called on any thread, one call at a time, those
/// that carry transfers included: it must not wait for another thread, and neither write a line
/// itself nor set a sink.
using Sink = std::function<void(std::string_view line)>;

/// Sends the library's few diagnostic lines to `sink` from now on; an empty one restores standard
/// output. The sink before is not called any more when this returns.
KELO_API void setSink(Sink sink);

/// Writes `text` to the sink as one line, its control characters escaped as "\xNN".
KELO_API void write(std::string_view text);

} // namespace KeloAPI::Diagnostics
