#pragma once

#include <array>
#include <charconv>
#include <string>

namespace KeloAPI {

/// The shortest decimal text that reads back as this finite number: always with a point, never with
/// an exponent.
inline std::string decimalText(double value) {
    // The longest is the smallest denormal number: "-0." and 324 digits behind it.
    std::array<char, 400> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed)
            .ptr;
    std::string text(buffer.data(), end);
    return text.find('.') == std::string::npos ? text + ".0" : text;
}

} // namespace KeloAPI
