#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/http/URLRequest.hpp>
#include <KeloAPI/json/Parameters.hpp>

#include <optional>
#include <string>

namespace KeloAPI {

/// How a request's parameters become part of the request.
class KELO_API ParameterEncoding {
public:
    /// Writes parameters into a request, or says why it cannot; what it wrote so far stays.
    using Encoder = std::optional<Error> (*)(URLRequest& request, const Parameters& parameters);

    /// Into the query string, for every method: keys sorted, lists as `key[]=`, maps as
    /// `key[sub]=`, booleans as 1 and 0, null as `<null>`; everything but the unreserved characters
    /// is escaped. A query that is there stays in front. No parameters change nothing.
    static const ParameterEncoding URL;
    /// Into the body, as one JSON object, with the Content-Type application/json unless one is set.
    /// Infinite doubles, not-a-number and texts that are not UTF-8 cannot be encoded.
    static const ParameterEncoding JSON;

    /// An encoding of the caller's own.
    explicit constexpr ParameterEncoding(Encoder encoder)
        : _encoder(encoder) {}

    /// Runs the encoder. Absent where all went well.
    std::optional<Error> encode(URLRequest& request, const Parameters& parameters) const {
        return _encoder(request, parameters);
    }

    /// The encoder is the same function.
    friend bool operator==(const ParameterEncoding&, const ParameterEncoding&) = default;

private:
    Encoder _encoder;
};

namespace detail {
KELO_API std::optional<Error> encodeIntoQuery(URLRequest& request, const Parameters& parameters);
KELO_API std::optional<Error> encodeIntoBody(URLRequest& request, const Parameters& parameters);
} // namespace detail

inline constexpr ParameterEncoding ParameterEncoding::URL{&detail::encodeIntoQuery};
inline constexpr ParameterEncoding ParameterEncoding::JSON{&detail::encodeIntoBody};

/// The query string that `ParameterEncoding::URL` makes, without "?".
KELO_API std::string queryString(const Parameters& parameters);

} // namespace KeloAPI
