#include "service/Encoding.hpp"

#include <openssl/rand.h>

#include <stdexcept>

namespace KeloService {
namespace {

/// Few, because the accounts are invented and their password is printed in the manual.
constexpr int passwordRounds = 1000;
constexpr std::size_t hashBytes = 32;

unsigned char* octets(std::string& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

const unsigned char* octets(std::string_view bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

std::string hexadecimal(std::string_view bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto octet = static_cast<unsigned char>(byte);
        text += digits[octet >> 4];
        text += digits[octet & 15];
    }
    return text;
}

} // namespace

std::string encodeBase64(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    text.resize(static_cast<std::size_t>(
        EVP_EncodeBlock(octets(text), octets(bytes), static_cast<int>(bytes.size()))));
    return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
    std::string bytes(text.size() / 4 * 3 + 1, '\0');
    const int length = EVP_DecodeBlock(octets(bytes), octets(text), static_cast<int>(text.size()));
    // The decoder forgives blanks at either end, and counts the padding as bytes.
    if (length < 0 || text.size() % 4 != 0 || text.find_first_of(" \t\r\n") != text.npos) {
        return std::nullopt;
    }
    const int padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    bytes.resize(static_cast<std::size_t>(length - padding));
    return bytes;
}

std::string randomText(int bytes) {
    std::string random(static_cast<std::size_t>(bytes), '\0');
    if (RAND_bytes(octets(random), bytes) != 1) {
        throw std::runtime_error("no random numbers to be had");
    }
    return hexadecimal(random);
}

std::string hashPassword(const std::string& password, const std::string& salt) {
    std::string hash(hashBytes, '\0');
    PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()),
                      octets(std::string_view(salt)), static_cast<int>(salt.size()), passwordRounds,
                      EVP_sha256(), static_cast<int>(hash.size()), octets(hash));
    return hexadecimal(hash);
}

Sha256::Sha256()
    : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
    EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr);
}

void Sha256::add(std::string_view bytes) {
    EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size());
}

std::string Sha256::text() {
    std::string hash(hashBytes, '\0');
    EVP_DigestFinal_ex(context_.get(), octets(hash), nullptr);
    return hexadecimal(hash);
}

} // namespace KeloService
