#pragma once

#include "support/Words.hpp"

#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KeloAPI::testing {

/// A file put together by hand, so that every part of it can be wrong.
struct PropertyListFile {
    std::string magic = "bplist00";
    /// The bytes of each value.
    std::vector<std::string> values;
    unsigned offsetWidth = 4;
    unsigned referenceWidth = 1;
    std::uint64_t root = 0;
    /// In place of the right ones.
    std::optional<std::uint64_t> count;
    std::optional<std::uint64_t> table;
    std::vector<std::uint64_t> offsets;

    std::string bytes() const {
        std::string result = magic;
        std::vector<std::uint64_t> places;
        for (const std::string& value : values) {
            places.push_back(result.size());
            result += value;
        }
        const std::uint64_t end = result.size();
        for (const std::uint64_t place : offsets.empty() ? places : offsets) {
            result += bigEndian(place, offsetWidth);
        }
        result += std::string(6, '\0');
        result += static_cast<char>(offsetWidth);
        result += static_cast<char>(referenceWidth);
        result += bigEndian(count.value_or(offsets.empty() ? values.size() : offsets.size()), 8);
        result += bigEndian(root, 8);
        return result + bigEndian(table.value_or(end), 8);
    }

    std::optional<PropertyList> read() const { return read(bytes()); }

    static std::optional<PropertyList> read(const std::string& bytes) {
        return BinaryPropertyList::read(std::as_bytes(std::span(bytes)));
    }

    static std::string bigEndian(std::uint64_t value, unsigned width) {
        std::string result;
        for (unsigned left = width; left > 0; --left) {
            const unsigned shift = 8 * (left - 1);
            result += static_cast<char>(shift < 64 ? (value >> shift) & 0xFFU : 0);
        }
        return result;
    }
};

} // namespace KeloAPI::testing
