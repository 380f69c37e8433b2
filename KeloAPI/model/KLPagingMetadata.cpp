#include <KeloAPI/model/internal/PagingKeys.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>

namespace KeloAPI {

namespace {

/// The channel that a value describes; null where it describes none.
std::shared_ptr<KLChannel> channelOf(const JsonValue& value) {
    const auto json = value.object();
    if (!json) {
        return nullptr;
    }
    try {
        return KLChannelParser().parse(*json);
    } catch (const JsonParseError&) {
        return nullptr;
    }
}

} // namespace

KLPagingMetadata::KLPagingMetadata(const JsonObject& json) {
    PagingKeys keys(json);
    setCount(keys.count.value_or(0));
    _nextPage = keys.nextPage.value_or(0);
    _previousPage = keys.previousPage.value_or(0);
    _pageSize = keys.size.value_or(0);
    _nextAfter = keys.nextAfter.value_or(0);
    _title = std::move(keys.title);
    _anchor = std::move(keys.anchor);
    _backAnchor = std::move(keys.backAnchor);
    _channel = channelOf(keys.channel);
    _displayCount = keys.displayCount.value_or(0);
}

KLPagingMetadata::KLPagingMetadata(const KLPagingMetadata& metadata)
    : KLPagingMetadata(metadata.count(), metadata, metadata) {}

std::shared_ptr<KLPagingMetadata> KLPagingMetadata::ofRecords(std::int64_t count) {
    std::shared_ptr<KLPagingMetadata> metadata(new KLPagingMetadata);
    metadata->setCount(count);
    return metadata;
}

} // namespace KeloAPI
