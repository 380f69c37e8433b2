#pragma once

#include <openssl/evp.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace KeloService {

/// The standard alphabet, with padding.
std::string encodeBase64(std::string_view bytes);
/// Absent when the text is not base64 with padding.
std::optional<std::string> decodeBase64(std::string_view text);

/// Hexadecimal text of so many random bytes.
std::string randomText(int bytes);

/// What is kept of a password.
std::string hashPassword(const std::string& password, const std::string& salt);

/// The SHA-256 hash of bytes that come piece by piece.
class Sha256 {
public:
    Sha256();
    void add(std::string_view bytes);
    /// In hexadecimal digits. Can be called once, after the last piece.
    std::string text();

private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_;
};

} // namespace KeloService
