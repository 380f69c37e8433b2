#pragma once

#include <cstdint>
#include <string>

namespace KeloService {

/// The number as `bytes` bytes, the highest first: how MP4 and PNG files store every number.
inline std::string bigEndian(std::uint64_t number, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(number >> (8 * i) & 0xFF);
    }
    return text;
}

} // namespace KeloService
