#pragma once

#include <KeloAPI/archive/internal/PropertyList.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace KeloAPI {

/// The binary form of property lists, "bplist00".
class BinaryPropertyList {
public:
    /// Limits of a file, so that one from elsewhere costs no more than it is worth.
    static constexpr std::size_t maxBytes = std::size_t{64} << 20U;
    static constexpr std::size_t maxValues = 500'000;
    static constexpr std::uint8_t maxDepth = 128;

    /// Reads a whole file. None when anything of it is malformed: a size or place outside the file,
    /// values that take more room together than the file has, a container that holds itself, a key
    /// that is not text, a text that is neither ASCII nor UTF-16, an integer beyond 64 bits, or
    /// more than the limits above. Time and memory are in proportion to the bytes.
    static std::optional<PropertyList> read(std::span<const std::byte> bytes);

    /// The bytes of a list, whose references must lie in its table. Bytes of a text that
    /// are not UTF-8 are written as U+FFFD.
    static std::string write(const PropertyList& list);
};

} // namespace KeloAPI
