#pragma once

#include <KeloAPI/base/Export.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI {

/// A URL or relative reference of RFC 3986, kept as the text it was made from. The empty text is
/// not a URL, nor is one with a space, a control character, non-ASCII, one of <>"{}|\^` or a "%"
/// without two hexadecimal digits. Equality is equality of the texts.
class KELO_API URL {
public:
    /// The URL that `text` is, or none.
    static std::optional<URL> parse(std::string_view text);

    /// The empty URL, for where there must be one and none is known.
    static URL empty();

    /// The URL of the file at a path of this machine. A relative path is made absolute against the
    /// working directory; where that is gone, it stays relative. Empty stays empty.
    static URL fileURL(std::string_view path);

    const std::string& absoluteString() const { return _text; } ///< The text it was made of.

    /// In lower case, without ":"; empty for a relative reference.
    std::string scheme() const;
    /// Where a request to this URL goes: a name in lower case without its final dot, an IPv4
    /// address, or an IPv6 address in its shortest form without brackets. Empty when there is none,
    /// and for a host that may be read in more than one way: one with percent escapes or with
    /// anything but letters, digits, "-", "_" and single dots, or whose last label is a number
    /// although it is not an IPv4 address of four decimals.
    std::string host() const;
    /// As written, or the scheme's own for http and https; absent for others.
    std::optional<std::uint16_t> port() const;
    /// As written, percent escapes included; empty when there is none.
    std::string path() const;
    /// The path of a file URL with its percent escapes undone; absent for other URLs, and where the
    /// path holds a zero byte.
    std::optional<std::string> filePath() const;
    /// Without "?"; absent when the URL has no query.
    std::optional<std::string> query() const;

    /// True for an http or https URL with a host, as `host` understands it.
    bool isHTTP() const;
    /// True when scheme, host and port are the same.
    bool hasOriginOf(const URL& other) const;

    /// This URL with `component` after its path, joined by exactly one "/". What may not stand in
    /// a path (a space, "?", "#", "%", non-ASCII) is escaped; inner and trailing slashes and dot
    /// segments stay. The query and fragment stay behind the path.
    URL appendingPathComponent(std::string_view component) const;

    /// This URL with `query` added: behind "&" when there is a query already. `query` is escaped
    /// already; empty changes nothing.
    URL appendingQuery(std::string_view query) const;

    /// What `reference` means where this URL is the base, without its fragment; none when it is not
    /// a URL.
    std::optional<URL> resolve(std::string_view reference) const;

    friend bool operator==(const URL&, const URL&) = default; ///< The texts are equal.

private:
    explicit URL(std::string text)
        : _text(std::move(text)) {}

    std::string _text;
};

/// Escapes every byte outside the unreserved characters of RFC 3986 (letters, digits, "-", ".",
/// "_", "~") as "%XX".
KELO_API std::string percentEncoded(std::string_view text);

} // namespace KeloAPI
