#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

namespace {

const DateFormatter& cachedDateFormatter() {
    static NeverDestroyed<const DateFormatter> formatter;
    return *formatter;
}

} // namespace

const DateFormatter& JsonParserBase::dateFormatter() const {
    return cachedDateFormatter();
}

std::optional<std::string> JsonParserBase::parseId(const JsonValue& value) const {
    if (const auto text = value.text()) {
        return std::string(*text);
    }
    return value.numberText();
}

} // namespace KeloAPI
