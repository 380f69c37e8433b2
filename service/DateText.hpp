#pragma once

#include <cstdint>
#include <string>

namespace KeloService {

/// The wire's form of a time in milliseconds since 1970: "2016-03-01T12:00:00.250000", in UTC.
std::string dateText(std::int64_t milliseconds);

} // namespace KeloService
