#include "service/media/BitWriter.hpp"

#include <bit>

namespace KeloService {

void BitWriter::bits(std::uint32_t value, int width) {
    for (int bit = width - 1; bit >= 0; --bit) {
        if (used_ == 0) {
            bytes_ += '\0';
        }
        const auto mask = static_cast<unsigned char>((value >> bit & 1) << (7 - used_));
        bytes_.back() = static_cast<char>(static_cast<unsigned char>(bytes_.back()) | mask);
        used_ = (used_ + 1) % 8;
    }
}

void BitWriter::unsignedCode(std::uint32_t value) {
    const int width = static_cast<int>(std::bit_width(value + 1));
    bits(0, width - 1);
    bits(value + 1, width);
}

void BitWriter::align() {
    used_ = 0;
}

void BitWriter::trail() {
    flag(true);
    align();
}

} // namespace KeloService
