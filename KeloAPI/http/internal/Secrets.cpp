#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/base/internal/PercentDecoding.hpp>
#include <KeloAPI/http/internal/Secrets.hpp>

#include <algorithm>
#include <array>
#include <cstddef>

namespace KeloAPI {

namespace {

constexpr std::string_view notInValues = "&;#\"'<>\\ \t\r\n";

/// Where a secret stands in a text.
struct SecretPlace {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// The name in front of the "=" at `at`, percent escapes included.
std::string_view nameBefore(std::string_view text, std::size_t at) {
    std::size_t begin = at;
    while (begin > 0 && (Ascii::isAlphanumeric(text[begin - 1]) ||
                         std::string_view("-_.~%[]").find(text[begin - 1]) != text.npos)) {
        --begin;
    }
    std::string_view name = text.substr(begin, at - begin);
    // JSON may write the "&" in front of it as an escape.
    constexpr std::string_view ampersand = "u0026";
    if (begin > 0 && text[begin - 1] == '\\' && name.starts_with(ampersand)) {
        name.remove_prefix(ampersand.size());
    }
    return name;
}

/// The value behind the "=" at `at`, where its name is secret; empty otherwise.
SecretPlace valueBehind(std::string_view text, std::size_t at, const SecretNames& names) {
    if (!names.contains(nameBefore(text, at))) {
        return {};
    }
    return {at + 1, std::min(text.find_first_of(notInValues, at + 1), text.size())};
}

/// The user and password in front of the "@" at `at`; empty where that is not in a URL. JSON may
/// write a slash with a backslash in front.
SecretPlace userBefore(std::string_view text, std::size_t at) {
    const std::size_t slash = text.find_last_of("/?#\"'<> \t\r\n", at);
    if (slash == text.npos || slash == 0 || text[slash] != '/') {
        return {};
    }
    const std::size_t other = text.find_last_not_of('\\', slash - 1);
    return other != text.npos && text[other] == '/' ? SecretPlace{slash + 1, at} : SecretPlace{};
}

} // namespace

std::string SecretNames::plain(std::string_view name) {
    std::string letters;
    for (const char c : percentDecoded(name)) {
        if (Ascii::isAlphanumeric(c)) {
            letters += Ascii::lower(c);
        }
    }
    return letters;
}

bool SecretNames::contains(std::string_view name) const {
    constexpr std::array<std::string_view, 7> whole = {"auth", "key", "otp", "pass",
                                                       "pin",  "pwd", "sig"};
    constexpr std::array<std::string_view, 14> parts = {
        "accesskey",  "apikey",  "authentication", "authorization", "cookie",
        "credential", "jwt",     "passphrase",     "passwd",        "password",
        "secret",     "session", "signature",      "token"};
    const std::string letters = plain(name);
    return _added.contains(letters) ||
           std::find(whole.begin(), whole.end(), letters) != whole.end() ||
           std::any_of(parts.begin(), parts.end(), [&](std::string_view part) {
               return letters.find(part) != std::string::npos;
           });
}

std::string withoutSecrets(std::string_view text, const SecretNames& names,
                           const SecretListener& listener) {
    if (text.find('=') == text.npos && text.find('@') == text.npos) {
        return std::string(text); // as most URLs
    }
    std::string result;
    std::size_t copied = 0;
    for (std::size_t at = text.find_first_of("=@"); at != text.npos;
         at = text.find_first_of("=@", at + 1)) {
        const auto [begin, end] =
            text[at] == '@' ? userBefore(text, at) : valueBehind(text, at, names);
        if (begin < copied || begin == end) {
            continue;
        }
        const std::string_view secret = text.substr(begin, end - begin);
        if (listener && secret != blankedSecret) {
            listener(secret);
        }
        result.append(text.substr(copied, begin - copied)).append(blankedSecret);
        copied = end;
    }
    return result.append(text.substr(copied));
}

} // namespace KeloAPI
