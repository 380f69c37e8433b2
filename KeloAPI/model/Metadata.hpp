#pragma once

#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/json/Parameters.hpp>

#include <utility>

namespace KeloAPI {

/// The paging values of one list response, from which the requests for the pages beside it are
/// made. A key that is missing or of another kind leaves its default.
class KELO_API Metadata {
public:
    /// What a page says of itself and of the pages beside it.
    struct Values {
        std::int64_t count = 0;                                  ///< As the function of this name.
        std::optional<std::int64_t> nextPage = std::nullopt;     ///< As the function of this name.
        std::optional<std::int64_t> previousPage = std::nullopt; ///< As the function of this name.
        std::int64_t pageSize = 0;                               ///< As the function of this name.
        std::optional<std::string> anchor = std::nullopt;        ///< As the function of this name.
        std::optional<std::string> backAnchor = std::nullopt;    ///< As the function of this name.
        std::optional<std::string> title = std::nullopt;         ///< As the function of this name.
        std::int64_t nextAfter = 0;                              ///< As the function of this name.
        std::int64_t displayCount = 0;                           ///< As the function of this name.
    };

    /// From the object that holds the paging keys. Never fails.
    explicit Metadata(const JsonObject& json);
    /// For a host's tests.
    explicit Metadata(Values values)
        : _values(std::move(values)) {}

    /// "count": the number of records in the whole list; 0 when missing.
    std::int64_t count() const { return _values.count; }
    /// "nextPage": the number of the next page; absent when there is none.
    std::optional<std::int64_t> nextPage() const { return _values.nextPage; }
    /// "previousPage": the number of the page before; absent when there is none.
    std::optional<std::int64_t> previousPage() const { return _values.previousPage; }
    /// "size": records in a page; 0 when missing.
    std::int64_t pageSize() const { return _values.pageSize; }
    /// "anchor": the cursor of the next page, sent as text or as a number.
    const std::optional<std::string>& anchor() const { return _values.anchor; }
    /// "backAnchor": the cursor of the page before, sent as text.
    const std::optional<std::string>& backAnchor() const { return _values.backAnchor; }
    /// "title".
    const std::optional<std::string>& title() const { return _values.title; }
    /// "nextAfter": the position after which the next page starts; 0 when missing.
    std::int64_t nextAfter() const { return _values.nextAfter; }
    /// "displayCount": the count to show to the user; 0 when missing.
    std::int64_t displayCount() const { return _values.displayCount; }
    /// Stored as given.
    void setDisplayCount(std::int64_t displayCount) { _values.displayCount = displayCount; }

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

    Values _values;
};

} // namespace KeloAPI
