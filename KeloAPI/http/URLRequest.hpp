#pragma once

#include <KeloAPI/base/Data.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/Method.hpp>

#include <chrono>
#include <optional>
#include <set>
#include <string>

namespace KeloAPI {

/// One request as it goes to the transport.
class KELO_API URLRequest {
public:
    /// Absent where no URL could be made: sending such a request ends with `UnsupportedURL`.
    std::optional<URL> url;
    /// `GET` unless set.
    Method method = Method::GET;
    /// The fields to send beside those that the transport adds itself, such as "Host" and
    /// "Content-Length".
    HeaderFields headerFields;
    /// Names of those header fields that a redirect must not carry to another origin.
    std::set<std::string, HeaderNameLess> originBoundFields;
    /// Absent for a request without a body.
    std::optional<Data> body;
    /// How long no byte may move, in either direction, before the request times out.
    std::chrono::milliseconds timeoutInterval{60'000};

    /// Method and URL, and never a header. In the URL, "BLANKED" stands in the place of a user with
    /// a password, and of values whose names in the query speak of a secret, such as "token".
    std::string description() const;

    /// Why this request cannot be sent at all; absent when it can.
    std::optional<Error> problem() const;
};

/// Anything that a request can be made from.
class KELO_API URLRequestConvertible {
public:
    URLRequestConvertible() = default;
    URLRequestConvertible(const URLRequestConvertible&) = default;
    URLRequestConvertible& operator=(const URLRequestConvertible&) = default;
    virtual ~URLRequestConvertible() = default;
    /// The request to send; asked for once by each call.
    virtual KeloAPI::URLRequest URLRequest() const = 0;
};

} // namespace KeloAPI
