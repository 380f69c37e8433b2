#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::optional<std::string> textOf(const JsonValue& value) {
    const auto view = value.text();
    return view ? std::optional<std::string>(*view) : std::nullopt;
}

std::optional<URL> urlOf(const JsonValue& value) {
    const auto view = value.text();
    return view ? URL::parse(*view) : std::nullopt;
}

} // namespace KeloAPI
