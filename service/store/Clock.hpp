#pragma once

#include <cstdint>

namespace KeloService {

/// Milliseconds since 1970 in UTC, the form in which times are kept.
std::int64_t currentMilliseconds();

} // namespace KeloService
