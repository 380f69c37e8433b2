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

} // namespace KeloAPI::testing
