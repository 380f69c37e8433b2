#pragma once

#include <cstdint>

namespace KeloAPI {

/// A stretch of a text or a list: where it begins and how much it covers, in units that its user
/// names.
struct Range {
    std::int64_t location = 0; ///< Where it begins, from 0.
    std::int64_t length = 0;   ///< How much it covers.

    friend bool operator==(const Range&, const Range&) = default; ///< Both numbers are equal.
};

} // namespace KeloAPI
