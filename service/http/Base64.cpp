#include "service/http/Base64.hpp"

#include <openssl/evp.h>

#include <algorithm>

namespace KeloService {

std::string encodeBase64(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
    // The decoder below forgives blanks at either end; here they are no base64.
    if (text.find_first_of(" \t\r\n") != std::string_view::npos) {
        return std::nullopt;
    }
    std::string bytes(text.size() / 4 * 3 + 1, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                       reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    if (length < 0 || text.size() % 4 != 0) {
        return std::nullopt;
    }
    const auto padding = static_cast<std::size_t>(text.ends_with("==")  ? 2
                                                  : text.ends_with("=") ? 1
                                                                        : 0);
    bytes.resize(static_cast<std::size_t>(length) - std::min<std::size_t>(padding, bytes.size()));
    return bytes;
}

} // namespace KeloService
