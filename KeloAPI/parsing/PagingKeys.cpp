#include <KeloAPI/parsing/PagingKeys.hpp>

namespace KeloAPI {

namespace {

std::optional<std::string> text(const JsonValue& value) {
    const auto view = value.text();
    return view ? std::optional<std::string>(*view) : std::nullopt;
}

std::optional<std::string> textOrNumber(const JsonValue& value) {
    if (const auto number = value.number()) {
        return number->stringValue();
    }
    return text(value);
}

} // namespace

PagingKeys::PagingKeys(const JsonObject& json) {
    const auto values = json.values("count", "nextPage", "previousPage", "size", "nextAfter",
                                    "title", "anchor", "backAnchor", "displayCount");
    count = values[0].integer();
    nextPage = values[1].integer();
    previousPage = values[2].integer();
    size = values[3].integer();
    nextAfter = values[4].integer();
    title = text(values[5]);
    anchor = textOrNumber(values[6]);
    backAnchor = text(values[7]);
    displayCount = values[8].integer();
}

} // namespace KeloAPI
