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
    /// "albumArtUrl" of "track"; absent when missing or not a URL.
    std::optional<URL> albumArtUrl;

    /// Null when "trackName" or "artistName" of "track" is missing or not text, or "trackId"
    /// missing or not a number.
    static std::shared_ptr<KLPostAudioMetadata> fromJSON(const JsonObject& json);

    /// "itunesId" of "track": the track's number in the music store; absent when missing or
    /// not a number.
    const std::optional<Number>& iTunesId() const { return _iTunesId; }
    /// "itunes_affiliate_token" of "track"; absent when missing or not text.
    const std::optional<std::string>& affiliateToken() const { return _affiliateToken; }
    /// "hasAudioTrackTimeline" of "track"; false when missing or not a number.
    bool hasTrackTimeline() const { return _hasTrackTimeline; }

private:
    KLPostAudioMetadata(std::string artist, std::string track, std::string identifier)
        : artistName(std::move(artist))
        , trackName(std::move(track))
        , trackId(std::move(identifier)) {}

    std::optional<Number> _iTunesId;
    std::optional<std::string> _affiliateToken;
    bool _hasTrackTimeline = false;
};

} // namespace KeloAPI
