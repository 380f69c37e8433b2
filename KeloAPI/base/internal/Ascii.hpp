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

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool isAlphanumeric(char c) {
    return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'z');
}

inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

inline bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Without the blanks and line ends around it.
inline std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

} // namespace KeloAPI::Ascii
