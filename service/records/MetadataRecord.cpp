#include "service/records/MetadataRecord.hpp"

#include "service/DateText.hpp"

#include <utility>

namespace KeloService {
namespace {

template <typename Value>
void addPresent(Json& record, const char* key, const std::optional<Value>& value) {
    if (value) {
        record[key] = *value;
    }
}

} // namespace

Json pageRecord(const PageMetadata& metadata, Json records, const std::string& baseUrl) {
    Json page{{"title", metadata.title},
              {"count", metadata.count},
              {"displayCount", metadata.count},
              {"size", metadata.size}};
    addPresent(page, "nextPage", metadata.nextPage);
    addPresent(page, "previousPage", metadata.previousPage);
    addPresent(page, "nextAfter", metadata.nextAfter);
    if (!metadata.anchor.is_null()) {
        page["anchor"] = metadata.anchor;
    }
    addPresent(page, "backAnchor", metadata.backAnchor);
    if (metadata.channel) {
        page["channel"] = channelRecord(*metadata.channel, baseUrl);
    }
    page["records"] = std::move(records);
    return page;
}

Json channelRecord(const Channel& channel, const std::string& baseUrl) {
    const std::string icon = baseUrl + "/media/channels/" + std::to_string(channel.channelId);
    return {{"channelId", channel.channelId},
            {"channel", channel.name},
            {"description", channel.description},
            {"fontColor", channel.fontColor},
            {"backgroundColor", channel.backgroundColor},
            {"created", dateText(channel.created)},
            {"iconFullUrl", icon + ".png"},
            {"retinaIconFullUrl", icon + "@2x.png"},
            {"exploreRetinaIconFullUrl", icon + "-explore@2x.png"},
            {"following", false},
            {"showRecent", true},
            {"vanityUrl", channel.vanityUrl}};
}

} // namespace KeloService
