#pragma once

#include <cstdint>
#include <string>

namespace KeloService {

/// Milliseconds since 1970 in UTC, the form in which times are kept.
std::int64_t currentMilliseconds();

/// The wire's form of such a time: "2016-03-01T12:00:00.250000".
std::string dateText(std::int64_t milliseconds);

} // namespace KeloService
