#include "Text.hpp"

#include <utf8proc.h>

#include <sstream>
#include <utility>

namespace KeloHost {

namespace {

struct CodePoint {
    utf8proc_int32_t value;
    /// Bytes it takes; 1 for a byte that belongs to no character.
    std::size_t length;
};

/// What a reader sees as one character: a letter with its marks, or a whole emoji.
struct Character {
    /// Bytes it takes.
    std::size_t length;
    std::size_t columns;
};

constexpr utf8proc_int32_t replacement = 0xFFFD;
/// Asks for the coloured form of the character before it, which is as wide as an emoji.
constexpr utf8proc_int32_t emojiPresentation = 0xFE0F;
constexpr std::size_t emojiColumns = 2;

/// The first code point of a text that is not empty.
CodePoint firstOf(std::string_view text) {
    utf8proc_int32_t value = 0;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                         static_cast<utf8proc_ssize_t>(text.size()), &value);
    return length <= 0 ? CodePoint{replacement, 1}
                       : CodePoint{value, static_cast<std::size_t>(length)};
}

bool isControl(utf8proc_int32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

bool turnsDirection(utf8proc_int32_t c) {
    return c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

/// Of a control character, those of the blank that is printed in its place.
std::size_t columnsOf(utf8proc_int32_t c) {
    return isControl(c) ? 1 : static_cast<std::size_t>(utf8proc_charwidth(c));
}

bool isPictograph(utf8proc_int32_t c) {
    return utf8proc_get_property(c)->boundclass == UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC;
}

/// The first character of a text that is not empty.
Character firstCharacterOf(std::string_view text) {
    CodePoint last = firstOf(text);
    Character character{last.length, columnsOf(last.value)};
    // An emoji is drawn in the place of one, of however many it is made.
    const bool isEmoji = isPictograph(last.value);
    utf8proc_int32_t state = 0;
    while (character.length < text.size()) {
        const CodePoint next = firstOf(text.substr(character.length));
        if (utf8proc_grapheme_break_stateful(last.value, next.value, &state)) {
            break;
        }
        if (!isEmoji) {
            character.columns += columnsOf(next.value);
        } else if (next.value == emojiPresentation) {
            character.columns = emojiColumns;
        }
        character.length += next.length;
        last = next;
    }
    return character;
}

} // namespace

std::string printable(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const CodePoint point = firstOf(text);
        if (isControl(point.value)) {
            line += ' ';
        } else if (point.value == replacement) {
            line += "\xEF\xBF\xBD";
        } else if (!turnsDirection(point.value)) {
            line += text.substr(0, point.length);
        }
        text.remove_prefix(point.length);
    }
    return line;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const Character character = firstCharacterOf(text);
        width += character.columns;
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
        const Character character = firstCharacterOf(text.substr(kept));
        used += character.columns;
        if (used > width) {
            break;
        }
        kept += character.length;
    }
    return width == 0 ? "" : std::string(text.substr(0, kept)) + "…";
}

std::vector<std::string> wrappedLines(const std::string& text, std::size_t width) {
    std::vector<std::string> lines;
    std::string line;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!line.empty() && displayWidth(line) + 1 + displayWidth(word) > width) {
            lines.push_back(std::exchange(line, {}));
        }
        line += (line.empty() ? "" : " ") + word;
    }
    lines.push_back(line);
    return lines;
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
