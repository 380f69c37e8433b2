#pragma once

#include <cstdint>

namespace KeloAPI {

/// A stretch of a text or list: where it begins and how long it is, in the units of what it belongs
/// to.
struct Range {
    std::uint64_t location = 0;
    std::uint64_t length = 0;

    friend bool operator==(const Range&, const Range&) = default;
};

} // namespace KeloAPI
