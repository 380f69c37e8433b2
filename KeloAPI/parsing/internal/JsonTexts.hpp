#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <optional>
#include <string>
#include <utility>

namespace KeloAPI {

/// A value that is text, as a text of its own; absent for any other kind.
std::optional<std::string> textOf(const JsonValue& value);

/// A value that is the text of a URL; absent for any other.
std::optional<URL> urlOf(const JsonValue& value);

/// What must be there: `JsonParseError::InsufficientData` at `key`, a constant, where it is absent.
template <class T>
T required(std::optional<T> value, const char* key) {
    if (!value) {
        throw JsonParseError(JsonParseError::InsufficientData, key);
    }
    return *std::move(value);
}

} // namespace KeloAPI
