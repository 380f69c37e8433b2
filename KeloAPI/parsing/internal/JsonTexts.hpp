#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

/// A value that is text, as a text of its own; absent for any other kind.
inline std::optional<std::string> textOf(const JsonValue& value) {
    return std::optional<std::string>(value.text());
}

/// As `textOf`; empty where the value does not exist.
inline std::optional<std::string> textOrEmpty(const JsonValue& value) {
    return value.exists() ? textOf(value) : std::string();
}

/// A value that is the text of a URL; absent for any other.
inline std::optional<URL> urlOf(const JsonValue& value) {
    return URL::parse(value.text().value_or(""));
}

/// The case of an enumeration whose name this is, where `names` has them in the cases' order; none
/// where it is not among them.
template <class Enum, class Names>
std::optional<Enum> caseNamed(const Names& names, std::string_view name) {
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? std::nullopt
                                : std::optional(static_cast<Enum>(found - names.begin()));
}

/// What must be there: `JsonParseError::InsufficientData` at `key`, a constant, where it is absent.
template <class T>
T required(std::optional<T> value, const char* key) {
    if (!value) {
        throw JsonParseError(JsonParseError::InsufficientData, key);
    }
    return *std::move(value);
}

} // namespace KeloAPI
