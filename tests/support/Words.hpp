#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace KeloAPI::testing {

/// The words of a text, parted by white space: a test's cases that hold none.
inline std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// The bytes that pairs of hexadecimal digits spell; blanks between them do not count.
inline std::string bytesOf(std::string_view hexadecimal) {
    std::string bytes;
    std::string digits;
    for (const char c : hexadecimal) {
        if (c != ' ') {
            digits += c;
        }
        if (digits.size() == 2) {
            bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
            digits.clear();
        }
    }
    return bytes;
}

/// A code point in UTF-8, by the definition of its ranges, surrogates too.
inline std::string utf8Of(char32_t point) {
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    if (point < 0x80) {
        return {byte(point)};
    }
    if (point < 0x800) {
        return {byte(0xC0 + point / 64), byte(0x80 + point % 64)};
    }
    if (point < 0x10000) {
        return {byte(0xE0 + point / 4096), byte(0x80 + point / 64 % 64), byte(0x80 + point % 64)};
    }
    return {byte(0xF0 + point / 262144), byte(0x80 + point / 4096 % 64),
            byte(0x80 + point / 64 % 64), byte(0x80 + point % 64)};
}

} // namespace KeloAPI::testing
