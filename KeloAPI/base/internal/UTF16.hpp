#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI {

/// The UTF-16 form of a text in UTF-8. U+FFFD stands for each byte that belongs to no character.
std::u16string utf16(std::string_view utf8);

/// The UTF-8 form of a text in UTF-16; none when a surrogate stands alone.
std::optional<std::string> utf8(std::u16string_view utf16);

/// Whether a byte of UTF-8 belongs to the character that an earlier one begins.
constexpr bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Whether a text is well-formed UTF-8: shortest forms only, no surrogates, nothing beyond
/// U+10FFFF.
bool isUTF8(std::string_view text);

} // namespace KeloAPI
