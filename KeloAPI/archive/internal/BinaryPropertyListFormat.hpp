#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What reader and writer of the binary form have in common. A file is its magic, the values, the
/// table of the values' offsets, and a trailer of fixed size; all integers are big-endian.
namespace KeloAPI::BinaryPropertyListFormat {

constexpr std::string_view magic = "bplist00";

/// The trailer: six bytes without meaning here, the widths of an offset and of a reference, then,
/// eight bytes each, the number of values, the root's reference and the place of the table.
constexpr std::size_t trailerSize = 32;
constexpr std::size_t offsetWidthAt = 6;
constexpr std::size_t referenceWidthAt = 7;
constexpr std::size_t countAt = 8;
constexpr std::size_t rootAt = 16;
constexpr std::size_t tableAt = 24;

/// The upper half of a value's first byte. The lower half is its length, or the binary logarithm of
/// it for integers and reals, or which of the simple values it is.
enum Kind : std::uint8_t {
    Simple = 0x0,
    Integer = 0x1,
    Real = 0x2,
    Date = 0x3,
    Data = 0x4,
    ASCII = 0x5,
    UTF16 = 0x6,
    UID = 0x8,
    Array = 0xA,
    Set = 0xC,
    Dictionary = 0xD,
};

/// In place of a length: the length follows as an integer value of its own.
constexpr std::uint8_t lengthFollows = 0xF;

/// Which simple value it is.
constexpr std::uint8_t null = 0x0;
constexpr std::uint8_t isFalse = 0x8;
constexpr std::uint8_t isTrue = 0x9;

} // namespace KeloAPI::BinaryPropertyListFormat
