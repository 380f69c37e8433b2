#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI {

/// Decodes the `length` base64 characters at `input` into `output`, which has room for
/// `base64DecodedLength` bytes, and returns how many bytes that gave; none when the input is not
/// base64. Padding is required, line ends are not allowed.
std::optional<std::size_t> base64DecodedBuffer(const char* input, std::size_t length,
                                               unsigned char* output);

/// The largest number of bytes that `length` base64 characters decode into.
constexpr std::size_t base64DecodedLength(std::size_t length) {
    return length / 4 * 3;
}

/// `bytes` in base64, with padding.
std::string base64Encoded(std::string_view bytes);

/// `text` decoded; none when it is not base64.
std::optional<std::string> base64Decoded(std::string_view text);

} // namespace KeloAPI
