#include "Stretch.hpp"

#include <cstdint>

namespace KeloHost {

std::string stretchOf(std::string_view text, KeloAPI::Range range) {
    std::string stretch;
    // Where the character stands that the byte belongs to, and where the next one does.
    std::int64_t unit = 0;
    std::int64_t next = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if ((byte & 0xC0U) != 0x80U) {
            unit = next;
            next += byte >= 0xF0U ? 2 : 1;
        }
        if (unit >= range.location && unit - range.location < range.length) {
            stretch += character;
        }
    }
    return stretch;
}

} // namespace KeloHost
