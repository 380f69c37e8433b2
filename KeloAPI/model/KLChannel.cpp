#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

namespace {

constexpr const char* black = "000000";

} // namespace

bool KLChannel::isEqual(const Object& other) const {
    const auto* channel = dynamic_cast<const KLChannel*>(&other);
    return channel != nullptr && *channel == *this;
}

void KLChannel::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText(channelId, "channelId");
    coder.encodeText(name, "name");
    coder.encodeDate(created, "created");
    coder.encodeURL(iconUrl, "iconUrl");
    coder.encodeURL(iconRetinaUrl, "iconRetinaUrl");
    coder.encodeText(fontColorHex, "fontColorHex");
    coder.encodeText(backgroundColorHex, "backgroundColorHex");
    coder.encodeText(channelDescription, "channelDescription");
}

std::shared_ptr<KLChannel> KLChannel::initWithCoder(KeyedUnarchiver& coder) {
    auto channel = std::make_shared<KLChannel>(
        coder.decodeText("channelId").value_or(""), coder.decodeText("name").value_or(""),
        coder.decodeText("fontColorHex").value_or(black),
        coder.decodeText("backgroundColorHex").value_or(black));
    channel->created = coder.decodeDate("created");
    channel->iconUrl = coder.decodeURL("iconUrl");
    channel->iconRetinaUrl = coder.decodeURL("iconRetinaUrl");
    channel->channelDescription = coder.decodeText("channelDescription");
    return channel;
}

KLChannelParser::KLChannelParser(std::shared_ptr<const TimelineParser> timelineParser)
    : _timelineParser(std::move(timelineParser)) {}

std::shared_ptr<KLChannel> KLChannelParser::parse(const JsonObject& json) const {
    const auto [channelId, channelName, fontColor, backgroundColor, createdText, iconUrl,
                iconRetinaUrl, exploreIconRetinaUrl, following, timelineData, showRecent,
                description, vanityUrl] =
        json.values("channelId", "channel", "fontColor", "backgroundColor", "created",
                    "iconFullUrl", "retinaIconFullUrl", "exploreRetinaIconFullUrl", "following",
                    "timeline", "showRecent", "description", "vanityUrl");
    auto id = required(parseId(channelId), "channelId");
    auto channel = std::make_shared<KLChannel>(
        std::move(id), required(textOf(channelName), "channel"), textOf(fontColor).value_or(black),
        textOf(backgroundColor).value_or(black));
    if (const auto created = createdText.text()) {
        channel->created = dateFormatter().date(*created);
    }
    channel->iconUrl = urlOf(iconUrl);
    channel->iconRetinaUrl = urlOf(iconRetinaUrl);
    channel->exploreIconRetinaUrl = urlOf(exploreIconRetinaUrl);
    channel->following = following.boolean().value_or(false);
    if (const auto timeline = timelineData.object(); timeline && _timelineParser) {
        channel->timelineData = _timelineParser->parse(*timeline);
    }
    channel->showRecent = showRecent.boolean().value_or(false);
    channel->channelDescription = textOf(description);
    channel->vanityPathSuffix = textOf(vanityUrl);
    return channel;
}

} // namespace KeloAPI
