#include <KeloAPI/api/internal/Base64.hpp>

#include <cstdint>

namespace KeloAPI {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

} // namespace

std::optional<std::size_t> base64DecodedBuffer(const char* input, std::size_t length,
                                               unsigned char* output) {
    if (length % 4 != 0) {
        return std::nullopt;
    }
    const std::string_view text(input, length);
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    std::size_t written = 0;
    for (std::size_t at = 0; at < length; at += 4) {
        std::uint32_t bits = 0;
        const bool last = at + 4 == length;
        const std::size_t characters = last ? 4 - padding : 4;
        for (std::size_t i = 0; i < 4; ++i) {
            const std::size_t value = i < characters ? alphabet.find(text[at + i]) : 0;
            if (value == std::string_view::npos) {
                return std::nullopt;
            }
            bits = bits << 6U | static_cast<std::uint32_t>(value);
        }
        for (std::size_t i = 0; i + 1 < characters; ++i) {
            output[written++] = static_cast<unsigned char>(bits >> (16U - 8U * i));
        }
    }
    return written;
}

std::string base64Encoded(std::string_view bytes) {
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8U | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text += i <= group.size() ? alphabet[bits >> (18U - 6U * i) & 63U] : '=';
        }
    }
    return text;
}

std::optional<std::string> base64Decoded(std::string_view text) {
    std::string bytes(base64DecodedLength(text.size()), '\0');
    const auto written = base64DecodedBuffer(text.data(), text.size(),
                                             reinterpret_cast<unsigned char*>(bytes.data()));
    if (!written) {
        return std::nullopt;
    }
    bytes.resize(*written);
    return bytes;
}

} // namespace KeloAPI
