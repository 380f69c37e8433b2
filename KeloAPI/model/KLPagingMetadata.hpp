#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/json/Json.hpp>

namespace KeloAPI {

class KLChannel;

/// The paging values that a `KLPagedData` carries. Unlike `Metadata` it has no absent page numbers:
/// a missing one is 0. One thread at a time.
class KELO_API KLPagingMetadata final : public Object {
public:
    /// From the object that holds the paging keys. Never fails; a negative "count" reads as 0.
    explicit KLPagingMetadata(const JsonObject& json);
    /// A copy of another one.
    explicit KLPagingMetadata(const KLPagingMetadata& metadata);
    /// The values of two joined pages: `count` as it is given; `previousPage`, `backAnchor` and
    /// `nextAfter` of `prepend`; all others of `metadata`.
    KLPagingMetadata(std::int64_t count, const KLPagingMetadata& metadata,
                     const KLPagingMetadata& prepend)
        : _count(count)
        , _nextPage(metadata._nextPage)
        , _previousPage(prepend._previousPage)
        , _pageSize(metadata._pageSize)
        , _anchor(metadata._anchor)
        , _backAnchor(prepend._backAnchor)
        , _title(metadata._title)
        , _nextAfter(prepend._nextAfter)
        , _channel(metadata._channel)
        , _displayCount(metadata._displayCount) {}
    /// The values of a list of `count` records that came without paging values.
    static std::shared_ptr<KLPagingMetadata> ofRecords(std::int64_t count);

    /// "count": records in the whole list.
    std::int64_t count() const { return _count; }
    /// A negative count is stored as 0.
    void setCount(std::int64_t count) { _count = count < 0 ? 0 : count; }
    /// "nextPage"; 0 when there is none.
    std::int64_t nextPage() const { return _nextPage; }
    /// "previousPage"; 0 when there is none.
    std::int64_t previousPage() const { return _previousPage; }
    /// "size": records in a page.
    std::int64_t pageSize() const { return _pageSize; }
    /// "anchor": the cursor of the next page, sent as text or as a number.
    const std::optional<std::string>& anchor() const { return _anchor; }
    /// "backAnchor": the cursor of the page before, sent as text.
    const std::optional<std::string>& backAnchor() const { return _backAnchor; }
    /// "title".
    const std::optional<std::string>& title() const { return _title; }
    /// "nextAfter": the position after which the next page starts.
    std::int64_t nextAfter() const { return _nextAfter; }
    /// "channel": the channel that the list belongs to, without its timeline; null where there is
    /// none or it cannot be read.
    const std::shared_ptr<KLChannel>& channel() const { return _channel; }
    /// "displayCount": the count to show to the user.
    std::int64_t displayCount() const { return _displayCount; }
    /// Stored as given.
    void setDisplayCount(std::int64_t displayCount) { _displayCount = displayCount; }

private:
    KLPagingMetadata() = default;

    std::int64_t _count = 0;
    std::int64_t _nextPage = 0;
    std::int64_t _previousPage = 0;
    std::int64_t _pageSize = 0;
    std::optional<std::string> _anchor;
    std::optional<std::string> _backAnchor;
    std::optional<std::string> _title;
    std::int64_t _nextAfter = 0;
    std::shared_ptr<KLChannel> _channel;
    std::int64_t _displayCount = 0;
};

} // namespace KeloAPI
