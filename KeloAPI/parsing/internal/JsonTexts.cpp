#include <KeloAPI/parsing/internal/JsonTexts.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

namespace KeloAPI {

std::optional<std::string> textOf(const JsonValue& value) {
    const auto view = value.text();
    return view ? std::optional<std::string>(*view) : std::nullopt;
}

std::optional<URL> urlOf(const JsonValue& value) {
    const auto view = value.text();
    return view ? URL::parse(*view) : std::nullopt;
}

std::string requiredText(const JsonValue& value, const char* key) {
    const auto view = value.text();
    if (!view) {
        throw JsonParseError(JsonParseError::InsufficientData, key);
    }
    return std::string(*view);
}

} // namespace KeloAPI
