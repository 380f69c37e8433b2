#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/http/internal/TextDecoding.hpp>

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

namespace KeloAPI {

namespace {

/// Whether the converter would take `name` as it stands. Behind a slash it takes options, with
/// which a server could make it drop bytes; other characters it passes over, and takes the locale's
/// set when none is left.
bool isCharsetName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return Ascii::isAlphanumeric(c) || c == '-' || c == '_' || c == '.' || c == ':';
    });
}

struct Close {
    void operator()(void* converter) const { iconv_close(converter); }
};

} // namespace

std::string charsetOf(std::string_view contentType) {
    auto semicolon = contentType.find(';');
    while (semicolon != std::string_view::npos) {
        contentType.remove_prefix(semicolon + 1);
        semicolon = contentType.find(';');
        const std::string_view parameter = Ascii::trimmed(contentType.substr(0, semicolon));
        const auto equals = parameter.find('=');
        if (equals == std::string_view::npos ||
            !Ascii::equalsIgnoringCase(Ascii::trimmed(parameter.substr(0, equals)), "charset")) {
            continue;
        }
        std::string_view value = Ascii::trimmed(parameter.substr(equals + 1));
        if (value.size() >= 2 && value.starts_with('"') && value.ends_with('"')) {
            value = value.substr(1, value.size() - 2);
        }
        return std::string(value);
    }
    return {};
}

std::optional<std::string> decodedText(std::string_view bytes, const std::string& charset) {
    if (!isCharsetName(charset)) {
        return std::nullopt;
    }
    const iconv_t opened = iconv_open("UTF-8", charset.c_str());
    if (reinterpret_cast<std::intptr_t>(opened) == -1) {
        return std::nullopt;
    }
    const std::unique_ptr<void, Close> converter(opened);
    std::string text;
    std::array<char, 4096> buffer{};
    // iconv does not write to its input, whatever its signature says.
    char* from = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    while (left > 0) {
        char* to = buffer.data();
        std::size_t room = buffer.size();
        const std::size_t before = left;
        const std::size_t outcome = iconv(converter.get(), &from, &left, &to, &room);
        text.append(buffer.data(), buffer.size() - room);
        const bool failed = outcome == static_cast<std::size_t>(-1);
        if (failed && left == before && room == buffer.size()) {
            return std::nullopt;
        }
    }
    // Some sets hold a character back until they have seen the one behind it.
    char* to = buffer.data();
    std::size_t room = buffer.size();
    iconv(converter.get(), nullptr, nullptr, &to, &room);
    text.append(buffer.data(), buffer.size() - room);
    return text;
}

} // namespace KeloAPI
