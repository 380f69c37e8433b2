#include "service/http/Sha256.hpp"

#include <array>

namespace KeloService {

Sha256::Sha256()
    : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
    EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr);
}

void Sha256::add(std::string_view bytes) {
    EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size());
}

std::string Sha256::text() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<unsigned char, 32> hash{};
    EVP_DigestFinal_ex(context_.get(), hash.data(), nullptr);
    std::string text;
    for (const unsigned char byte : hash) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace KeloService
