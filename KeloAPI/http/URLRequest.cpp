#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <algorithm>
#include <string_view>

namespace KeloAPI {

namespace {

/// A token of RFC 9110.
bool isHeaderName(std::string_view name) {
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::all_of(name.begin(), name.end(), [&](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               marks.find(c) != std::string_view::npos;
    });
}

bool isHeaderValue(std::string_view value) {
    return value.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

} // namespace

std::string URLRequest::description() const {
    return std::string(name(method)) + " " + (url ? url->absoluteString() : "nil");
}

std::optional<Error> URLRequest::problem() const {
    if (!url || !url->isHTTP()) {
        return httpError(HTTPErrorCode::UnsupportedURL,
                         url ? "unsupported URL " + url->absoluteString()
                             : "the request has no URL");
    }
    for (const auto& [field, value] : headerFields) {
        if (!isHeaderName(field) || !isHeaderValue(value)) {
            return httpError(HTTPErrorCode::InvalidHeader,
                             "the header field " + field + " cannot be sent");
        }
    }
    return std::nullopt;
}

URLRequestConvertible::~URLRequestConvertible() = default;

} // namespace KeloAPI
