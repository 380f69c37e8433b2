#pragma once

#include <KeloAPI/base/Error.hpp>

#include <cstddef>
#include <exception>
#include <functional>
#include <string_view>

namespace KeloAPI {

/// What a parser throws. Parsers' errors stay inside the library: an endpoint's completion hears
/// the envelope's own error, with this one underlying.
class KELO_API JsonParseError final : public std::exception {
public:
    /// The cases; a case's position is its error code.
    enum Case : int {
        /// A parser that should have overridden `parse` did not.
        NotImplemented,
        /// Reserved; nothing throws it.
        NotInitialized,
        /// A value is of an unexpected kind, or a closure made no object.
        IncorrectType,
        /// A required key is missing or unusable, or a wrapped parser made no object.
        InsufficientData,
        /// A value lies outside its allowed set.
        InvalidData,
    };

    /// Of the errors that `error` makes.
    static constexpr std::string_view domain = "KeloAPI.JsonParseError";

    /// `key` names the wire key at fault, for people who debug; it must be a constant, and it plays
    /// no part in equality.
    JsonParseError(Case which, const char* key = nullptr) noexcept
        : _case(which)
        , _key(key) {}
    JsonParseError(const JsonParseError&) = default;
    JsonParseError& operator=(const JsonParseError&) = default;

    int code() const noexcept { return _case; } ///< The position of the case.
    const char* what() const noexcept override; ///< The name of the case, for people who debug.

    /// The same as an error value: domain and code, no message, and the key under "key" where it is
    /// known.
    Error error() const;

    /// The cases are equal.
    friend bool operator==(const JsonParseError& a, const JsonParseError& b) {
        return a._case == b._case;
    }

private:
    Case _case;
    const char* _key;
};

} // namespace KeloAPI

/// The hash of a parse error is its code.
template <>
struct std::hash<KeloAPI::JsonParseError> {
    std::size_t operator()(const KeloAPI::JsonParseError& error) const noexcept {
        return static_cast<std::size_t>(error.code());
    }
};
