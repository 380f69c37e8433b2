#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KeloService {

/// One HTTP request as it stood on the wire, with its target taken apart.
struct Request {
    std::string method;
    /// Path and query exactly as sent.
    std::string target;
    /// In order of arrival, names as sent.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    /// Number of the connection that carried it, from 1.
    std::uint64_t connection = 0;

    std::string_view path() const;
    /// Without the question mark; empty when there is none.
    std::string_view rawQuery() const;
    /// The first header of that name, whatever its case.
    std::optional<std::string> header(std::string_view name) const;
    /// The first query parameter of that name, decoded.
    std::optional<std::string> parameter(std::string_view name) const;
    /// The path's segments, decoded: "/users/me" has two.
    std::vector<std::string> segments() const;
    /// Whether it concerns the stand-in itself rather than the service it stands in for.
    bool isControl() const;
};

/// Reads method, target and headers of a request's head (up to and including the blank line).
Request parseHead(std::string_view head);

/// Percent-decoding; `plusIsBlank` as in query strings. Broken escapes stay as they are.
std::string percentDecode(std::string_view text, bool plusIsBlank);

} // namespace KeloService
