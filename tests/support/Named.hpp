#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <memory>
#include <string>
#include <utility>

namespace KeloAPI::testing {

/// A model of the tests: an object with a name.
class Named : public Object {
public:
    explicit Named(std::string text)
        : name(std::move(text)) {}
    std::string name;
};

/// Makes a `Named` of "name", which is required; a "throw" is the code of the error to fail with.
class NamedParser : public JsonParser<Named> {
public:
    std::shared_ptr<Named> parse(const JsonObject& json) const override {
        ++count;
        const auto [name, code] = json.values("name", "throw");
        if (const auto which = code.integer()) {
            throw JsonParseError(static_cast<JsonParseError::Case>(*which));
        }
        if (const auto text = name.text()) {
            return std::make_shared<Named>(std::string(*text));
        }
        throw JsonParseError(JsonParseError::InsufficientData, "name");
    }

    /// How often `parse` was called.
    mutable int count = 0;
};

/// Makes the name louder: which of the two has parsed is to be seen.
struct LouderParser final : NamedParser {
    std::shared_ptr<Named> parse(const JsonObject& json) const override {
        auto named = NamedParser::parse(json);
        named->name += "!";
        return named;
    }
};

} // namespace KeloAPI::testing
