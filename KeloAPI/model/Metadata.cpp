#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

Metadata::Metadata(const JsonObject& json) {
    const auto [count, nextPage, previousPage, size, nextAfter, title, anchor, backAnchor,
                displayCount] =
        json.values("count", "nextPage", "previousPage", "size", "nextAfter", "title", "anchor",
                    "backAnchor", "displayCount");
    _values.count = count.integer().value_or(0);
    _values.nextPage = nextPage.integer();
    _values.previousPage = previousPage.integer();
    _values.pageSize = size.integer().value_or(0);
    _values.nextAfter = nextAfter.integer().value_or(0);
    _values.title = textOf(title);
    _values.anchor = anchor.text() ? textOf(anchor) : anchor.numberText();
    _values.backAnchor = textOf(backAnchor);
    _values.displayCount = displayCount.integer().value_or(0);
}

std::optional<Parameters> Metadata::nextPageParameters(std::int64_t size) const {
    return pageParameters(_values.nextPage, "anchor", size);
}

std::optional<Parameters> Metadata::previousPageParameters(std::int64_t size) const {
    return pageParameters(_values.previousPage, "backAnchor", size);
}

std::optional<Parameters> Metadata::pageParameters(const std::optional<std::int64_t>& page,
                                                   const char* anchorKey, std::int64_t size) const {
    Parameters parameters;
    if (page) {
        parameters.emplace("page", *page);
    }
    if (_values.anchor && !_values.anchor->empty()) {
        parameters.emplace(anchorKey, *_values.anchor);
    }
    if (parameters.empty()) {
        return std::nullopt;
    }
    parameters.emplace("size", size);
    return parameters;
}

} // namespace KeloAPI
