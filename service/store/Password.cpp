#include "service/store/Password.hpp"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <stdexcept>
#include <vector>

namespace KeloService {
namespace {

/// Few, because the accounts are invented and their password is printed in the manual.
constexpr int rounds = 1000;

template <typename Bytes>
std::string hexadecimal(const Bytes& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace

std::string randomText(int bytes) {
    std::vector<unsigned char> random(static_cast<std::size_t>(bytes));
    if (RAND_bytes(random.data(), bytes) != 1) {
        throw std::runtime_error("no random numbers to be had");
    }
    return hexadecimal(random);
}

std::string hashPassword(const std::string& password, const std::string& salt) {
    std::array<unsigned char, 32> hash{};
    PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()),
                      reinterpret_cast<const unsigned char*>(salt.data()),
                      static_cast<int>(salt.size()), rounds, EVP_sha256(),
                      static_cast<int>(hash.size()), hash.data());
    return hexadecimal(hash);
}

} // namespace KeloService
