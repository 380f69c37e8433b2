#pragma once

#include <KeloAPI/json/Json.hpp>

#include <stdexcept>
#include <string>
#include <utility>

namespace KeloAPI::testing {

/// A JSON text of a test, parsed, for as long as its views are used.
class JsonText {
public:
    explicit JsonText(const std::string& text)
        : _document(parsed(text)) {}

    JsonValue root() const { return _document.root(); }
    /// The root of a text that is an object.
    JsonObject object() const { return root().object().value(); }
    /// The value under a key of a text that is an object.
    JsonValue operator[](std::string_view key) const { return object()[key]; }

private:
    static JsonDocument parsed(const std::string& text) {
        auto document = JsonDocument::parse(text);
        if (!document) {
            throw std::invalid_argument(text + ": " + document.error().description());
        }
        return std::move(document.value());
    }

    JsonDocument _document;
};

} // namespace KeloAPI::testing
