#pragma once

#include <KeloAPI/base/Error.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

/// Domain of the errors of the HTTP layer.
inline constexpr std::string_view HTTPErrorDomain = "KeloAPI.HTTP";

/// Codes within `HTTPErrorDomain`. They are stable: new ones are added at the end.
enum class HTTPErrorCode : std::int8_t {
    /// Something failed that no other code names; the underlying error says what.
    Unknown = -1,
    /// The request was cancelled, or its manager was destroyed.
    Cancelled = 1,
    /// No byte moved for the request's time-out interval, or a time limit of the manager's
    /// settings has passed.
    TimedOut = 2,
    /// The host's (or proxy's) name has no address.
    CannotFindHost = 3,
    /// No connection came about.
    CannotConnect = 4,
    /// The connection broke off, before the response was complete or before it was secure.
    ConnectionLost = 5,
    /// TLS failed, or the server's certificate is not one that the host's policy accepts.
    ServerTrust = 6,
    /// There is no URL, or not one of http or https.
    UnsupportedURL = 7,
    /// A header field or its value holds what may not stand in one.
    InvalidHeader = 8,
    /// More than 20 redirects in a row.
    TooManyRedirects = 9,
    /// The response is not HTTP, not what its head says, or has a head without end.
    BadServerResponse = 10,
    /// The body is not the JSON that was expected.
    BadJson = 11,
    /// There is no body where one was expected.
    EmptyBody = 12,
    /// The body is not text in the character set that the response names.
    TextEncoding = 13,
    /// The response to a download has a status that brings no file: the user info holds it under
    /// `HTTPStatusCodeKey`.
    HTTPStatus = 14,
    /// A downloaded file could not be written.
    CannotWriteFile = 15,
    /// A parameter cannot be encoded.
    ParameterEncoding = 16,
    /// The body is larger than a response that is kept in memory may be
    /// (`TransportSettings::maxBodyBytes`).
    BodyTooLarge = 17,
    /// The system has no memory, thread or descriptor to give for the request, or the bodies that
    /// are kept in memory reach `TransportSettings::maxBodyBytesInProcess`. The next request may
    /// fare better.
    OutOfResources = 18,
    /// The request's manager belongs to the parent of this forked process; one that is made here
    /// works.
    Inherited = 19,
};

/// The user-info key of the status of an `HTTPStatus` error.
inline constexpr std::string_view HTTPStatusCodeKey = "HTTPStatusCode";

/// An error of the HTTP layer.
inline Error httpError(HTTPErrorCode code, std::string message,
                       std::optional<Error> underlying = {}) {
    return Error::withMessage(HTTPErrorDomain, static_cast<std::int64_t>(code), std::move(message),
                              std::move(underlying));
}

/// True when `error` is the HTTP layer's error with that code.
inline bool isHTTPError(const Error& error, HTTPErrorCode code) {
    return error.domain() == HTTPErrorDomain && error.code() == static_cast<std::int64_t>(code);
}

} // namespace KeloAPI
