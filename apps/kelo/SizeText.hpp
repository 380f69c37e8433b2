#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace KeloHost {

/// "712 B", "45 kB", "3.2 MB": thousands of thousands.
std::string sizeText(std::uint64_t bytes);
/// "12 s", "5 min", "3 h", "40 d"; the full units only. What lies ahead is "0 s".
std::string ageText(std::chrono::microseconds age);

} // namespace KeloHost
