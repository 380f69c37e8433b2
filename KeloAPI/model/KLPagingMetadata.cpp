#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>
#include <KeloAPI/model/Metadata.hpp>

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
    const Metadata metadata(json);
    setCount(metadata.count());
    _nextPage = metadata.nextPage().value_or(0);
    _previousPage = metadata.previousPage().value_or(0);
    _pageSize = metadata.pageSize();
    _nextAfter = metadata.nextAfter();
    _title = metadata.title();
    _anchor = metadata.anchor();
    _backAnchor = metadata.backAnchor();
    _channel = channelOf(json["channel"]);
    _displayCount = metadata.displayCount();
}

KLPagingMetadata::KLPagingMetadata(const KLPagingMetadata& metadata)
    : KLPagingMetadata(metadata.count(), metadata, metadata) {}

std::shared_ptr<KLPagingMetadata> KLPagingMetadata::ofRecords(std::int64_t count) {
    std::shared_ptr<KLPagingMetadata> metadata(new KLPagingMetadata);
    metadata->setCount(count);
    return metadata;
}

} // namespace KeloAPI
