#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace KeloService {

/// Writes numbers of any width into bytes, the highest bit first.
class BitWriter {
public:
    /// The lowest `width` bits of the value, 32 at most.
    void bits(std::uint32_t value, int width);
    void flag(bool value) { bits(value ? 1 : 0, 1); }
    /// An Exp-Golomb code, as video headers use for numbers that are mostly small.
    void unsignedCode(std::uint32_t value);
    /// Zero bits up to the next whole byte.
    void align();
    /// Whole bytes. Only after `align`.
    void bytes(std::string_view text) { bytes_ += text; }
    /// A one bit, then zero bits up to the next whole byte: the end of a NAL unit's payload.
    void trail();

    /// What was written; the last byte is only whole after `align` or `trail`.
    const std::string& written() const { return bytes_; }

private:
    std::string bytes_;
    /// Bits used in the last byte; 0 when it is full.
    int used_ = 0;
};

} // namespace KeloService
