#include <KeloAPI/archive/internal/UTF16.hpp>

#include <cstddef>
#include <cstdint>

namespace KeloAPI {

namespace {

constexpr char32_t replacement = 0xFFFD;

struct Character {
    char32_t codePoint;
    std::size_t bytes;
    bool wellFormed;
};

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// How many bytes a lead byte announces; 0 when it is none.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead < 0xE0) {
        return 2;
    }
    if (lead >= 0xE0 && lead < 0xF0) {
        return 3;
    }
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

/// The first character of a text that is not empty.
Character firstCharacter(std::string_view text) {
    constexpr Character malformed{replacement, 1, false};
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = sequenceLength(lead);
    if (length == 1) {
        return {lead, 1, true};
    }
    if (length == 0 || text.size() < length) {
        return malformed;
    }
    char32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if (!isContinuation(text[at])) {
            return malformed;
        }
        codePoint = (codePoint << 6U) | (static_cast<unsigned char>(text[at]) & 0x3FU);
    }
    constexpr char32_t lowest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    if (codePoint < lowest[length] || codePoint > 0x10FFFF || isSurrogate) {
        return malformed;
    }
    return {codePoint, length, true};
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
    const auto tail = [&](unsigned shift) {
        text += static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
    };
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0U | (codePoint >> 6U));
        tail(0);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0U | (codePoint >> 12U));
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0U | (codePoint >> 18U));
        tail(12);
        tail(6);
        tail(0);
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
        if (!first.wellFormed) {
            return false;
        }
        text.remove_prefix(first.bytes);
    }
    return true;
}

} // namespace KeloAPI
