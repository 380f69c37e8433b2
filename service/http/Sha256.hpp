#pragma once

#include <openssl/evp.h>

#include <memory>
#include <string>
#include <string_view>

namespace KeloService {

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
