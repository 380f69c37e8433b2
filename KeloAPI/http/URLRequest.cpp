#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/Secrets.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace KeloAPI {

namespace {

/// A token of RFC 9110.
bool isHeaderName(std::string_view name) {
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::all_of(name.begin(), name.end(), [&](char c) {
        return Ascii::isAlphanumeric(c) || marks.find(c) != std::string_view::npos;
    });
}

bool isHeaderValue(std::string_view value) {
    return value.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

} // namespace

std::string_view name(Method method) {
    constexpr std::array<std::string_view, 9> names = {
        "OPTIONS", "GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "TRACE", "CONNECT"};
    return names.at(static_cast<std::size_t>(method));
}

bool HeaderNameLess::operator()(std::string_view a, std::string_view b) const {
    const auto [inA, inB] =
        std::mismatch(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Ascii::lower(x) == Ascii::lower(y); });
    return inB != b.end() && (inA == a.end() || Ascii::lower(*inA) < Ascii::lower(*inB));
}

std::string URLRequest::description() const {
    return std::string(name(method)) + " " +
           (url ? withoutSecrets(url->absoluteString(), SecretNames()) : "nil");
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

} // namespace KeloAPI
