#pragma once

#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/json/Parameters.hpp>

namespace KeloAPI {

/// The paging values of one list response, from which the requests for the pages beside it are
/// made. A key that is missing or of another kind leaves its default.
class KELO_API Metadata {
public:
    /// From the object that holds the paging keys. Never fails.
    explicit Metadata(const JsonObject& json);

    /// "count": the number of records in the whole list; 0 when missing.
    std::int64_t count() const { return _count; }
    /// "nextPage": the number of the next page; absent when there is none.
    std::optional<std::int64_t> nextPage() const { return _nextPage; }
    /// "previousPage": the number of the page before; absent when there is none.
    std::optional<std::int64_t> previousPage() const { return _previousPage; }
    /// "size": records in a page; 0 when missing.
    std::int64_t pageSize() const { return _pageSize; }
    /// "anchor": the cursor of the next page, sent as text or as a number.
    const std::optional<std::string>& anchor() const { return _anchor; }
    /// "backAnchor": the cursor of the page before, sent as text.
    const std::optional<std::string>& backAnchor() const { return _backAnchor; }
    /// "title".
    const std::optional<std::string>& title() const { return _title; }
    /// "nextAfter": the position after which the next page starts; 0 when missing.
    std::int64_t nextAfter() const { return _nextAfter; }
    /// "displayCount": the count to show to the user; 0 when missing.
    std::int64_t displayCount() const { return _displayCount; }
    void setDisplayCount(std::int64_t displayCount) { _displayCount = displayCount; }

    /// The parameters that ask for the next page with `size` records: "page" when there is a next
    /// page's number, "anchor" when there is one that is not empty, and "size". Absent when there
    /// is neither.
    std::optional<Parameters> nextPageParameters(std::int64_t size) const;

    /// The same for the page before, with "backAnchor" carrying `anchor`: the service expects the
    /// forward cursor there, and `backAnchor` is never sent.
    std::optional<Parameters> previousPageParameters(std::int64_t size) const;

private:
    std::optional<Parameters> pageParameters(const std::optional<std::int64_t>& page,
                                             const char* anchorKey, std::int64_t size) const;

    std::int64_t _count = 0;
    std::optional<std::int64_t> _nextPage;
    std::optional<std::int64_t> _previousPage;
    std::int64_t _pageSize = 0;
    std::optional<std::string> _anchor;
    std::optional<std::string> _backAnchor;
    std::optional<std::string> _title;
    std::int64_t _nextAfter = 0;
    std::int64_t _displayCount = 0;
};

} // namespace KeloAPI
