#pragma once

#include <cstdint>
#include <optional>

namespace KeloAPI {

/// How soon a file is wanted.
enum class QueuePriority : std::uint8_t {
    Low = 0,    ///< After all others.
    Normal = 1, ///< Before `Low`, after `High`.
    High = 2    ///< Before all others.
};

/// The priority with this raw value; none for any other number.
constexpr std::optional<QueuePriority> queuePriorityOf(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 2) {
        return std::nullopt;
    }
    return static_cast<QueuePriority>(rawValue);
}

} // namespace KeloAPI
