#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLPostAudioMetadata> KLPostAudioMetadata::fromJSON(const JsonObject& json) {
    const auto [track, trackId] = json.values("track", "trackId");
    const auto object = track.object();
    auto id = trackId.numberText();
    if (!object || !id) {
        return nullptr;
    }
    const auto [trackName, artistName, iTunesId, affiliateToken, hasTrackTimeline, albumArtUrl] =
        object->values("trackName", "artistName", "itunesId", "itunes_affiliate_token",
                       "hasAudioTrackTimeline", "albumArtUrl");
    auto name = textOf(trackName);
    auto artist = textOf(artistName);
    if (!name || !artist) {
        return nullptr;
    }
    std::shared_ptr<KLPostAudioMetadata> audio(new KLPostAudioMetadata(
        *std::move(artist), *std::move(name), *std::move(id), iTunesId.number(),
        textOf(affiliateToken), hasTrackTimeline.boolean().value_or(false)));
    audio->albumArtUrl = urlOf(albumArtUrl);
    return audio;
}

} // namespace KeloAPI
