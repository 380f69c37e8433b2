#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/base/internal/PercentDecoding.hpp>
#include <KeloAPI/base/URL.hpp>

#include <arpa/inet.h>
#include <uriparser/Uri.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace KeloAPI {

namespace {

/// Views into a text that outlives it.
class ParsedUri {
public:
    explicit ParsedUri(const std::string& text)
        : _ok(uriParseSingleUriExA(&_uri, text.data(), text.data() + text.size(), nullptr) ==
              URI_SUCCESS) {}
    ParsedUri(const ParsedUri&) = delete;
    ParsedUri& operator=(const ParsedUri&) = delete;
    ~ParsedUri() {
        if (_ok) {
            uriFreeUriMembersA(&_uri);
        }
    }

    bool ok() const { return _ok; }
    const UriUriA& operator*() const { return _uri; }

private:
    UriUriA _uri{};
    bool _ok;
};

/// Absent without digits, and with more than a port has.
std::optional<std::uint16_t> portOf(std::string_view digits) {
    std::uint16_t port = 0;
    const auto outcome = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    return outcome.ec == std::errc() ? std::optional(port) : std::nullopt;
}

/// True for what resolvers take for a number, in lower case.
bool isNumber(std::string_view label) {
    const bool isHex = label.starts_with("0x");
    label.remove_prefix(isHex ? 2 : 0);
    return label.find_first_not_of(isHex ? "0123456789abcdef" : "0123456789") ==
           std::string_view::npos;
}

/// True for a name in lower case that every reader takes for the same name. Escapes are undone by
/// some, characters beyond ASCII are mapped to others, and behind a last label that is a number
/// hides an address.
bool isPlainName(std::string_view name) {
    const auto isAllowed = [](char c) {
        return Ascii::isAlphanumeric(c) || c == '-' || c == '_' || c == '.';
    };
    return std::all_of(name.begin(), name.end(), isAllowed) && !name.starts_with('.') &&
           name.find("..") == std::string_view::npos && !isNumber(name.substr(name.rfind('.') + 1));
}

bool isIPv4(const std::string& name) {
    in_addr address{};
    return inet_pton(AF_INET, name.c_str(), &address) == 1;
}

/// Empty for what later versions of the notation may bring.
std::string normalisedIPv6(const std::string& text) {
    in6_addr address{};
    std::array<char, INET6_ADDRSTRLEN> normalised{};
    if (inet_pton(AF_INET6, text.c_str(), &address) != 1) {
        return {};
    }
    inet_ntop(AF_INET6, &address, normalised.data(), normalised.size());
    return normalised.data();
}

bool isUnreserved(char c) {
    return Ascii::isAlphanumeric(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

bool mayStandInPath(char c) {
    return isUnreserved(c) || std::string_view("!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

/// `text` with every byte escaped that may not stand there.
std::string escaped(std::string_view text, bool (*mayStand)(char)) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (mayStand(c)) {
            result += c;
        } else {
            result.append("%").append({digits[byte >> 4U], digits[byte & 15U]});
        }
    }
    return result;
}

std::string escapedPath(std::string_view text) {
    return escaped(text, mayStandInPath);
}

// The parts of a URL that has been parsed once are read off its text, as they are asked for often.

bool endsAuthority(char c) {
    return c == '/' || c == '?' || c == '#';
}

/// A colon before any other delimiter ends the scheme, and nothing else does.
std::string_view schemeOf(std::string_view url) {
    const auto end =
        std::find_if(url.begin(), url.end(), [](char c) { return c == ':' || endsAuthority(c); });
    return end == url.end() || *end != ':' ? std::string_view()
                                           : std::string_view(url.begin(), end);
}

std::string_view withoutScheme(std::string_view url) {
    const std::string_view scheme = schemeOf(url);
    return scheme.empty() ? url : url.substr(scheme.size() + 1);
}

/// Empty where there is none.
std::string_view authorityOf(std::string_view url) {
    std::string_view rest = withoutScheme(url);
    if (!rest.starts_with("//")) {
        return {};
    }
    rest.remove_prefix(2);
    return {rest.begin(), std::find_if(rest.begin(), rest.end(), endsAuthority)};
}

struct Authority {
    /// An IPv6 address in its brackets.
    std::string_view host;
    std::string_view port;
};

Authority splitAuthority(std::string_view authority) {
    authority.remove_prefix(authority.find('@') + 1); // past the end is zero
    const auto colon = authority.find(':', authority.starts_with('[') ? authority.find(']') : 0);
    return {authority.substr(0, colon),
            colon == std::string_view::npos ? std::string_view() : authority.substr(colon + 1)};
}

/// Where the path ends: at the query, the fragment or the end.
std::size_t endOfPath(std::string_view url) {
    return std::min(url.find_first_of("?#"), url.size());
}

std::string_view pathOf(std::string_view url) {
    const std::string_view rest = withoutScheme(url.substr(0, endOfPath(url)));
    return rest.starts_with("//") ? rest.substr(std::min(rest.find('/', 2), rest.size())) : rest;
}

} // namespace

std::optional<URL> URL::parse(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    URL url{std::string(text)};
    if (!ParsedUri(url._text).ok()) {
        return std::nullopt;
    }
    // The grammar lets any run of digits through.
    const std::string_view digits = splitAuthority(authorityOf(url._text)).port;
    if (!digits.empty() && !portOf(digits)) {
        return std::nullopt;
    }
    return url;
}

URL URL::empty() {
    return URL(std::string());
}

URL URL::fileURL(std::string_view path) {
    if (path.empty() || path.starts_with('/')) {
        return URL("file://" + escapedPath(path));
    }
    // Behind "//", its first component would be a host.
    std::error_code failure;
    const auto absolute = std::filesystem::absolute(path, failure);
    return failure ? URL("file:" + escapedPath(path)) : fileURL(absolute.string());
}

std::string URL::scheme() const {
    return Ascii::lower(schemeOf(_text));
}

std::string URL::host() const {
    const std::string_view host = splitAuthority(authorityOf(_text)).host;
    if (host.starts_with('[')) {
        return normalisedIPv6(std::string(host.substr(1, host.size() - 2)));
    }
    std::string name = Ascii::lower(host);
    if (isIPv4(name)) {
        return name;
    }
    if (name.ends_with('.')) {
        name.pop_back();
    }
    return isPlainName(name) ? name : std::string();
}

std::optional<std::uint16_t> URL::port() const {
    if (const auto port = portOf(splitAuthority(authorityOf(_text)).port)) {
        return port;
    }
    const std::string name = scheme();
    if (name == "https") {
        return 443;
    }
    if (name == "http") {
        return 80;
    }
    return std::nullopt;
}

std::string URL::path() const {
    return std::string(pathOf(_text));
}

std::optional<std::string> URL::filePath() const {
    if (scheme() != "file") {
        return std::nullopt;
    }
    std::string path = percentDecoded(pathOf(_text));
    // The system's calls would take the name to end there.
    if (path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return path;
}

std::optional<std::string> URL::query() const {
    const std::size_t end = std::min(_text.find('#'), _text.size());
    const std::size_t mark = _text.find('?');
    return mark < end ? std::optional(_text.substr(mark + 1, end - mark - 1)) : std::nullopt;
}

bool URL::isHTTP() const {
    const std::string name = scheme();
    return (name == "http" || name == "https") && !host().empty();
}

bool URL::hasOriginOf(const URL& other) const {
    return scheme() == other.scheme() && host() == other.host() && port() == other.port();
}

URL URL::appendingPathComponent(std::string_view component) const {
    const std::size_t end = endOfPath(_text);
    std::string text = _text.substr(0, end);
    if (!pathOf(_text).ends_with('/')) {
        text += '/';
    }
    // Behind a slash that begins the reference, a second one would make a host of what follows.
    const std::size_t most = withoutScheme(text) == "/" ? component.size() : 1;
    component.remove_prefix(std::min({component.find_first_not_of('/'), most, component.size()}));
    text += escapedPath(component);
    text += _text.substr(end);
    return URL(std::move(text));
}

URL URL::appendingQuery(std::string_view query) const {
    if (query.empty()) {
        return *this;
    }
    const std::size_t end = std::min(_text.find('#'), _text.size());
    std::string text = _text.substr(0, end);
    const auto mark = text.find('?');
    if (mark == std::string::npos) {
        text += '?';
    } else if (mark + 1 < text.size()) {
        text += '&';
    }
    text += query;
    text += _text.substr(end);
    return URL(std::move(text));
}

std::optional<URL> URL::resolve(std::string_view reference) const {
    const std::string owned(reference);
    const ParsedUri base(_text);
    const ParsedUri relative(owned);
    if (!relative.ok()) {
        return std::nullopt;
    }
    UriUriA joined{};
    if (uriAddBaseUriA(&joined, &*relative, &*base) != URI_SUCCESS) {
        uriFreeUriMembersA(&joined);
        return std::nullopt;
    }
    joined.fragment = {nullptr, nullptr};
    int characters = 0;
    std::string text;
    if (uriToStringCharsRequiredA(&joined, &characters) == URI_SUCCESS) {
        text.resize(static_cast<std::size_t>(characters) + 1);
        const bool written =
            uriToStringA(text.data(), &joined, characters + 1, nullptr) == URI_SUCCESS;
        text.resize(written ? static_cast<std::size_t>(characters) : 0);
    }
    uriFreeUriMembersA(&joined);
    return URL::parse(text);
}

std::string percentEncoded(std::string_view text) {
    return escaped(text, isUnreserved);
}

std::string percentDecoded(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view digits = text.substr(std::min(at + 1, text.size()), 2);
        const char* const end = digits.data() + digits.size();
        unsigned byte = 0;
        if (text[at] == '%' && digits.size() == 2 &&
            std::from_chars(digits.data(), end, byte, 16).ptr == end) {
            result += static_cast<char>(byte);
            at += 2;
        } else {
            result += text[at];
        }
    }
    return result;
}

} // namespace KeloAPI
