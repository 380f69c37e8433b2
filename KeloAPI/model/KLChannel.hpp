#pragma once

#include <KeloAPI/archive/Archivable.hpp>
#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <functional>

namespace KeloAPI {

class AnyObjectJsonParser;
class KLPagedData;
template <class P>
class KLPagedDataParser;

/// A named, coloured topic feed. One thread at a time.
class KELO_API KLChannel final : public Archivable {
public:
    /// "channelId", sent as text or as a number.
    std::string channelId;
    /// "channel".
    std::string name;
    /// "fontColor": a colour as hexadecimal digits.
    std::string fontColorHex = "000000";
    std::string backgroundColorHex = "000000"; ///< "backgroundColor", likewise.
    /// "iconFullUrl"; like the two below, absent when missing or
    /// not a URL.
    std::optional<URL> iconUrl;
    std::optional<URL> iconRetinaUrl;        ///< "retinaIconFullUrl".
    std::optional<URL> exploreIconRetinaUrl; ///< "exploreRetinaIconFullUrl".
    /// "following": whether the signed-in user follows the channel.
    bool following = false;
    /// "created".
    std::optional<Date> created;
    /// "description".
    std::optional<std::string> channelDescription;
    /// "vanityUrl".
    std::optional<std::string> vanityPathSuffix;
    /// "timeline": the first page of the channel's feed; null where none was sent or read.
    std::shared_ptr<KLPagedData> timelineData;
    /// "showRecent".
    bool showRecent = false;

    KLChannel() = default;
    /// All else has its default.
    KLChannel(std::string identifier, std::string title, std::string fontColor,
              std::string backgroundColor)
        : channelId(std::move(identifier))
        , name(std::move(title))
        , fontColorHex(std::move(fontColor))
        , backgroundColorHex(std::move(backgroundColor)) {}

    static constexpr std::string_view archivedClassName = "KLChannel"; ///< Its name in an archive.
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    /// Keeps identifier, name, creation, the first two icons, both colours and the description; the
    /// other properties are lost.
    void encodeWithCoder(KeyedArchiver& coder) const override;
    /// Missing texts become empty ones, missing colours black.
    static std::shared_ptr<KLChannel> initWithCoder(KeyedUnarchiver& coder);

    /// Whether `other` is a channel too, with the same identifier. Nothing else plays a part.
    bool isEqual(const Object& other) const;
    /// The identifiers are equal.
    friend bool operator==(const KLChannel& a, const KLChannel& b) {
        return a.channelId == b.channelId;
    }
};

/// Needs "channelId" (text or number) and "channel" (text): `InsufficientData`. Every other key has
/// a default.
class KELO_API KLChannelParser final : public JsonParser<KLChannel> {
public:
    // In full: a host in Objective-C++ has another class of the bare name.
    /// Reads a page of records of any kind.
    using TimelineParser = KeloAPI::KLPagedDataParser<AnyObjectJsonParser>;

    /// `timelineParser` reads "timeline", and what it throws is thrown on; null leaves that key
    /// unread.
    explicit KLChannelParser(std::shared_ptr<const TimelineParser> timelineParser = nullptr);
    std::shared_ptr<KLChannel> parse(const JsonObject& json) const override;

private:
    std::shared_ptr<const TimelineParser> _timelineParser;
};

} // namespace KeloAPI

/// The hash of a channel is that of its identifier.
template <>
struct std::hash<KeloAPI::KLChannel> {
    std::size_t operator()(const KeloAPI::KLChannel& channel) const {
        return std::hash<std::string>()(channel.channelId);
    }
};
