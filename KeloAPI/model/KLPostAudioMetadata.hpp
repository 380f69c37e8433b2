#pragma once

#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/json/Json.hpp>

namespace KeloAPI {

/// The music track of a post. One thread at a time.
class KELO_API KLPostAudioMetadata final : public Object {
public:
    /// "artistName" of the object "track".
    std::string artistName;
    std::string trackName; ///< "trackName" of "track".
    /// "trackId", a number beside "track", as decimal text.
    std::string trackId;
    /// "itunesId" of "track": the track's number in the music store; absent when missing or
    /// not a number.
    const std::optional<Number> iTunesId;
    /// "itunes_affiliate_token" of "track"; absent when missing or not text.
    const std::optional<std::string> affiliateToken;
    /// "hasAudioTrackTimeline" of "track"; false when missing or not a number.
    const bool hasTrackTimeline;
    /// "albumArtUrl" of "track"; absent when missing or not a URL.
    std::optional<URL> albumArtUrl;

    /// Null when "trackName" or "artistName" of "track" is missing or not text, or "trackId"
    /// missing or not a number.
    static std::shared_ptr<KLPostAudioMetadata> fromJSON(const JsonObject& json);

private:
    KLPostAudioMetadata(std::string artist, std::string track, std::string identifier,
                        std::optional<Number> storeNumber, std::optional<std::string> token,
                        bool hasTimeline)
        : artistName(std::move(artist))
        , trackName(std::move(track))
        , trackId(std::move(identifier))
        , iTunesId(storeNumber)
        , affiliateToken(std::move(token))
        , hasTrackTimeline(hasTimeline) {}
};

} // namespace KeloAPI
