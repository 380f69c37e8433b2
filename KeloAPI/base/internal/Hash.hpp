#pragma once

#include <cstdint>
#include <string_view>

namespace KeloAPI {

/// FNV-1a of 64 bits: the same in every build and run. Of a text in pieces, each but the first is
/// given what the piece before came to.
constexpr std::uint64_t stableHash(std::string_view text,
                                   std::uint64_t before = 0xcbf29ce484222325U) {
    std::uint64_t hash = before;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    return hash;
}

} // namespace KeloAPI
