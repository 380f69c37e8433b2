#include "TextWidth.hpp"

#include <langinfo.h>
#include <wchar.h>

#include <clocale>
#include <cstdint>

namespace KeloHost {

namespace {

struct Character {
    char32_t codePoint;
    /// Bytes it takes; 1 for a byte that belongs to no character.
    std::size_t length;
};

constexpr char32_t replacement = 0xFFFD;

/// How many bytes a character that begins so takes; 0 where none does.
std::size_t lengthOf(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        return 2;
    }
    if (first >= 0xE0 && first < 0xF0) {
        return 3;
    }
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

/// The first character of a text that is not empty.
Character firstOf(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = lengthOf(first);
    if (length == 0 || length > text.size()) {
        return {replacement, 1};
    }
    char32_t codePoint = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0U) != 0x80U) {
            return {replacement, 1};
        }
        codePoint = codePoint << 6U | (byte & 0x3FU);
    }
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    if (codePoint < smallest[length] || surrogate || codePoint > 0x10FFFF) {
        return {replacement, 1};
    }
    return {codePoint, length};
}

bool isControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

bool turnsDirection(char32_t c) {
    return c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

std::size_t columnsOf(char32_t c) {
    const int columns = wcwidth(static_cast<wchar_t>(c));
    return columns < 0 ? 1 : static_cast<std::size_t>(columns);
}

} // namespace

void useUnicode() {
    // Only the kinds of characters: numbers and dates keep the form that programs read.
    if (std::setlocale(LC_CTYPE, "") == nullptr ||
        std::string_view(nl_langinfo(CODESET)) != "UTF-8") {
        static_cast<void>(std::setlocale(LC_CTYPE, "C.UTF-8"));
    }
}

std::string printable(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstOf(text);
        if (isControl(character.codePoint)) {
            line += ' ';
        } else if (character.codePoint == replacement) {
            line += "\xEF\xBF\xBD";
        } else if (!turnsDirection(character.codePoint)) {
            line += text.substr(0, character.length);
        }
        text.remove_prefix(character.length);
    }
    return line;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const Character character = firstOf(text);
        width += columnsOf(character.codePoint);
        text.remove_prefix(character.length);
    }
    return width;
}

std::string clipped(std::string_view text, std::size_t width) {
    if (displayWidth(text) <= width) {
        return std::string(text);
    }
    std::size_t kept = 0;
    std::size_t used = 1; // for the ellipsis
    while (kept < text.size()) {
        const Character character = firstOf(text.substr(kept));
        used += columnsOf(character.codePoint);
        if (used > width) {
            break;
        }
        kept += character.length;
    }
    return width == 0 ? "" : std::string(text.substr(0, kept)) + "…";
}

std::string padded(std::string_view text, std::size_t width) {
    const std::size_t used = displayWidth(text);
    return std::string(text) + std::string(used < width ? width - used : 0, ' ');
}

std::string rightAligned(std::string_view text, std::size_t width) {
    const std::size_t used = displayWidth(text);
    return std::string(used < width ? width - used : 0, ' ') + std::string(text);
}

} // namespace KeloHost
