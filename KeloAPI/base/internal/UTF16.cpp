#include <KeloAPI/base/internal/UTF16.hpp>

#include <bit>
#include <cstddef>
#include <cstdint>

namespace KeloAPI {

namespace {

constexpr char32_t replacement = 0xFFFD;

struct Character {
    char32_t codePoint;
    std::size_t bytes;
};

/// The first character of a text that is not empty; the replacement, of one byte, where there is
/// none.
Character firstCharacter(std::string_view text) {
    constexpr Character malformed{replacement, 1};
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        return {lead, 1};
    }
    const auto length = static_cast<std::size_t>(std::countl_one(lead));
    if (length < 2 || length > 4 || text.size() < length) {
        return malformed;
    }
    char32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if (!continuesCharacter(text[at])) {
            return malformed;
        }
        codePoint = (codePoint << 6U) | (static_cast<unsigned char>(text[at]) & 0x3FU);
    }
    constexpr char32_t lowest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    const bool isWellFormed = codePoint >= lowest[length] && codePoint <= 0x10FFFF && !isSurrogate;
    return isWellFormed ? Character{codePoint, length} : malformed;
}

void append(std::u16string& text, char32_t codePoint) {
    if (codePoint < 0x10000) {
        text += static_cast<char16_t>(codePoint);
        return;
    }
    text += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10U));
    text += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FFU));
}

void append(std::string& text, char32_t codePoint) {
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
        return;
    }
    unsigned following = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
    text += static_cast<char>(~(0x7FU >> following) | (codePoint >> (6 * following)));
    while (following-- > 0) {
        text += static_cast<char>(0x80U | ((codePoint >> (6 * following)) & 0x3FU));
    }
}

} // namespace

std::u16string utf16(std::string_view utf8) {
    std::u16string result;
    result.reserve(utf8.size());
    while (!utf8.empty()) {
        const Character first = firstCharacter(utf8);
        append(result, first.codePoint);
        utf8.remove_prefix(first.bytes);
    }
    return result;
}

std::optional<std::string> utf8(std::u16string_view utf16) {
    std::string result;
    result.reserve(utf16.size());
    for (std::size_t at = 0; at < utf16.size(); ++at) {
        char32_t codePoint = utf16[at];
        if (codePoint >= 0xD800 && codePoint < 0xE000) {
            const char32_t low = at + 1 < utf16.size() ? utf16[at + 1] : 0;
            if (codePoint >= 0xDC00 || low < 0xDC00 || low >= 0xE000) {
                return std::nullopt;
            }
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10U) + (low - 0xDC00);
            ++at;
        }
        append(result, codePoint);
    }
    return result;
}

bool isUTF8(std::string_view text) {
    while (!text.empty()) {
        const Character first = firstCharacter(text);
        if (first.codePoint == replacement && first.bytes == 1) {
            return false;
        }
        text.remove_prefix(first.bytes);
    }
    return true;
}

} // namespace KeloAPI
