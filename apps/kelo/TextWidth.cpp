#include "Text.hpp"

#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <cwchar>

namespace KeloHost {

namespace {

struct Character {
    char32_t codePoint;
    /// Bytes it takes; 1 for a byte that belongs to no character.
    std::size_t length;
};

constexpr char32_t replacement = 0xFFFD;

/// The first character of a text that is not empty.
Character firstOf(std::string_view text) {
    wchar_t character = 0;
    std::mbstate_t state{};
    const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
    // For an incomplete or invalid one, the result is the largest numbers there are.
    return length > text.size()
               ? Character{replacement, 1}
               : Character{static_cast<char32_t>(character), std::max<std::size_t>(length, 1)};
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
