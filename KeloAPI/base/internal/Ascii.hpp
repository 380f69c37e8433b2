#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// Texts of protocols, whose letters are ASCII whatever the locale.
namespace KeloAPI::Ascii {

inline char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        c = lower(c);
    }
    return result;
}

inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

/// Without the blanks and line ends around it.
inline std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace KeloAPI::Ascii
