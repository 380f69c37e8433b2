#include <KeloAPI/model/internal/PagingKeys.hpp>
#include <KeloAPI/model/Metadata.hpp>

namespace KeloAPI {

Metadata::Metadata(const JsonObject& json) {
    PagingKeys keys(json);
    _count = keys.count.value_or(0);
    _nextPage = keys.nextPage;
    _previousPage = keys.previousPage;
    _pageSize = keys.size.value_or(0);
    _nextAfter = keys.nextAfter.value_or(0);
    _title = std::move(keys.title);
    _anchor = std::move(keys.anchor);
    _backAnchor = std::move(keys.backAnchor);
    _displayCount = keys.displayCount.value_or(0);
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
