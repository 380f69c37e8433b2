#pragma once

#include <KeloAPI/base/Export.hpp>

#include <string_view>

namespace KeloAPI {

/// Ends the process because the caller broke a contract that no error can report: prints one line,
/// "KeloAPI: contract violated: " and `what`, to standard error and aborts.
[[noreturn]] KELO_API void contractViolation(std::string_view what) noexcept;

/// Ends the process unless `holds`.
inline void require(bool holds, std::string_view what) {
    if (!holds) [[unlikely]] {
        contractViolation(what);
    }
}

} // namespace KeloAPI
