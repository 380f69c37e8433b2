#pragma once

#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/json/Json.hpp>

#include <optional>
#include <string>

namespace KeloAPI {

/// A value that is text, as a text of its own; absent for any other kind.
std::optional<std::string> textOf(const JsonValue& value);

/// A value that is the text of a URL; absent for any other.
std::optional<URL> urlOf(const JsonValue& value);

/// A value that must be text: `JsonParseError::InsufficientData` at `key`, a constant, otherwise.
std::string requiredText(const JsonValue& value, const char* key);

} // namespace KeloAPI
