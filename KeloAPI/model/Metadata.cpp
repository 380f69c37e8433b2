#include <KeloAPI/model/Metadata.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

Metadata::Metadata(const JsonObject& json) {
    const auto [count, nextPage, previousPage, size, nextAfter, title, anchor, backAnchor,
                displayCount] =
        json.values("count", "nextPage", "previousPage", "size", "nextAfter", "title", "anchor",
                    "backAnchor", "displayCount");
    _count = count.integer().value_or(0);
    _nextPage = nextPage.integer();
    _previousPage = previousPage.integer();
    _pageSize = size.integer().value_or(0);
    _nextAfter = nextAfter.integer().value_or(0);
    _title = textOf(title);
    _anchor = anchor.text() ? textOf(anchor) : anchor.numberText();
    _backAnchor = textOf(backAnchor);
    _displayCount = displayCount.integer().value_or(0);
}

std::optional<Parameters> Metadata::nextPageParameters(std::int64_t size) const {
    return pageParameters(_nextPage, "anchor", size);
}

std::optional<Parameters> Metadata::previousPageParameters(std::int64_t size) const {
    return pageParameters(_previousPage, "backAnchor", size);
}

std::optional<Parameters> Metadata::pageParameters(const std::optional<std::int64_t>& page,
                                                   const char* anchorKey, std::int64_t size) const {
    Parameters parameters;
    if (page) {
        parameters.emplace("page", *page);
    }
    if (_anchor && !_anchor->empty()) {
        parameters.emplace(anchorKey, *_anchor);
    }
    if (parameters.empty()) {
        return std::nullopt;
    }
    parameters.emplace("size", size);
    return parameters;
}

} // namespace KeloAPI
