#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/base/internal/PercentDecoding.hpp>
#include <KeloAPI/http/internal/Secrets.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace KeloAPI {

namespace {

constexpr std::string_view notInValues = "&;#\"'<>\\ \t\r\n";

/// Where a secret stands in a text.
struct SecretPlace {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// A character of a text, as it stands or in percent escapes: a "=" is "%3D" in a URL that is a
/// value of another URL, and "%253D" in one that is a value of that.
struct Mark {
    char character = 0;
    std::size_t size = 1;
    std::size_t depth = 0;
};

Mark markAt(std::string_view text, std::size_t at) {
    const Mark plain = {text[at]};
    if (plain.character != '%') {
        return plain;
    }
    std::size_t digits = at + 1;
    while (text.substr(digits, 2) == "25") {
        digits += 2;
    }
    unsigned byte = 0;
    const char* const begin = text.data() + digits;
    if (text.size() - digits < 2 || std::from_chars(begin, begin + 2, byte, 16).ptr != begin + 2) {
        return plain;
    }
    return {static_cast<char>(byte), digits + 2 - at, (digits - at + 1) / 2};
}

bool isInNames(char c) {
    constexpr std::string_view marks = "-_.~%[]";
    return Ascii::isAlphanumeric(c) || marks.find(c) != marks.npos ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// The name in front of the "=" at `at`, percent escapes included.
std::string_view nameBefore(std::string_view text, std::size_t at) {
    std::size_t begin = at;
    while (begin > 0 && isInNames(text[begin - 1])) {
        const Mark mark = markAt(text, begin - 1);
        if (!isInNames(mark.character)) { // in escapes, of which the digits have been passed
            begin += mark.size - 1;
            break;
        }
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

/// Where the value ends that begins at `at`. Escapes that are deeper than its "=" are part of it.
std::size_t endOfValue(std::string_view text, std::size_t at, std::size_t depth) {
    constexpr std::string_view notInEscapedValues = "&#\"";
    while (at < text.size() && notInValues.find(text[at]) == notInValues.npos) {
        const Mark mark = markAt(text, at);
        if (mark.depth <= depth &&
            notInEscapedValues.find(mark.character) != notInEscapedValues.npos) {
            break;
        }
        at += mark.size;
    }
    return at;
}

/// The value behind the "=" at `at`, where its name is secret; empty otherwise.
SecretPlace valueBehind(std::string_view text, std::size_t at, const Mark& mark,
                        const SecretNames& names) {
    if (!names.contains(nameBefore(text, at))) {
        return {};
    }
    const std::size_t begin = at + mark.size;
    return {begin, endOfValue(text, begin, mark.depth)};
}

/// The user and password in front of the "@" at `at`; empty where that is not in a URL, or where no
/// URL begins at `from` or behind it. JSON may write a slash with a backslash in front.
SecretPlace userBefore(std::string_view text, std::size_t from, std::size_t at) {
    const std::size_t found = text.substr(from, at - from).find_last_of("/?#\"'<> \t\r\n");
    const std::size_t slash = found == text.npos ? 0 : from + found;
    if (slash == 0 || text[slash] != '/') {
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
    constexpr std::string_view marks = "=@%"; // "=" may be an escape
    if (text.find_first_of(marks) == text.npos) {
        return std::string(text); // as most URLs
    }
    std::string result;
    std::size_t copied = 0;
    std::size_t behindUser = 0; // the last "@": looking back beyond it again finds nothing new
    for (std::size_t at = text.find_first_of(marks); at != text.npos;
         at = text.find_first_of(marks, std::max(at + 1, copied))) {
        const Mark mark = markAt(text, at);
        SecretPlace place;
        if (mark.character == '=') {
            place = valueBehind(text, at, mark, names);
        } else if (text[at] == '@') {
            place = userBefore(text, std::exchange(behindUser, at + 1), at);
        }
        const auto [begin, end] = place;
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
