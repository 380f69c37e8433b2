#pragma once

#include <KeloAPI/base/Export.hpp>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace KeloAPI {

class ParameterValue;

/// The parameters of a request: texts mapped to JSON-compatible values. Can be written as a braced
/// list: `{{"size", 5}, {"overflow", "trunc"}}`.
using Parameters = std::map<std::string, ParameterValue, std::less<>>;

/// The list form of a parameter's value.
using ParameterList = std::vector<ParameterValue>;

/// A value that a request can carry: null, a boolean, a 64-bit integer, a double, a text, a list or
/// a map. It owns what it holds.
class ParameterValue {
public:
    /// What it can be.
    using Held = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                              std::string, ParameterList, Parameters>;

    ParameterValue() = default;
    ParameterValue(std::nullptr_t) {} ///< Null, as without an argument.
    /// A boolean.
    ParameterValue(bool value)
        : _held(value) {}
    /// A signed integer.
    template <std::signed_integral Integer>
    ParameterValue(Integer value)
        : _held(static_cast<std::int64_t>(value)) {}
    /// An unsigned integer.
    template <std::unsigned_integral Integer>
    requires(!std::same_as<Integer, bool>) ParameterValue(Integer value)
        : _held(static_cast<std::uint64_t>(value)) {}
    /// A double; one that is not finite cannot be sent as JSON.
    ParameterValue(double value)
        : _held(value) {}
    /// A text in UTF-8, not null; the same holds for the texts below.
    ParameterValue(const char* value)
        : _held(std::string(value)) {}
    /// A text.
    ParameterValue(char* value)
        : ParameterValue(static_cast<const char*>(value)) {}
    /// A text.
    ParameterValue(std::string_view value)
        : _held(std::string(value)) {}
    /// A text.
    ParameterValue(std::string value)
        : _held(std::move(value)) {}
    /// A list.
    ParameterValue(ParameterList value)
        : _held(std::move(value)) {}
    /// A map.
    ParameterValue(Parameters value)
        : _held(std::move(value)) {}
    /// Any other pointer would quietly become a boolean.
    template <class T>
    ParameterValue(T*) = delete;

    const Held& held() const { return _held; } ///< The value as it was given.

    /// Of the same kind and value.
    friend bool operator==(const ParameterValue&, const ParameterValue&) = default;

private:
    Held _held;
};

} // namespace KeloAPI
