#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPostAudioMetadata.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

using Audio = KLPostAudioMetadata;

static_assert(!std::is_default_constructible_v<Audio>);
static_assert(std::is_invocable_r_v<std::shared_ptr<Audio>, decltype(Audio::fromJSON), JsonObject>);
// These may be changed.
static_assert(std::is_same_v<decltype(Audio::artistName), std::string>);
static_assert(std::is_same_v<decltype(Audio::trackName), std::string>);
static_assert(std::is_same_v<decltype(Audio::trackId), std::string>);
static_assert(std::is_same_v<decltype(Audio::albumArtUrl), std::optional<URL>>);

TEST(AudioMetadataTest, EveryKeyBesideTheTrackWithEveryKindOfValue) {
    const std::string track = R"({"trackName":"Song","artistName":"Band"})";
    checkKeys<Audio>(Audio::fromJSON,
                     {{"trackId", "123", "123", &Audio::trackId, numberTexts(), nothing},
                      {"track", track, "Song", &Audio::trackName, {}, nothing}});
}

TEST(AudioMetadataTest, EveryKeyOfTheTrackWithEveryKindOfValue) {
    checkKeys<Audio>(
        Audio::fromJSON,
        {{"trackName", R"("Song")", "Song", &Audio::trackName, texts(), nothing},
         {"artistName", R"("Band")", "Band", &Audio::artistName, texts(), nothing},
         {"itunesId", "99", "99", &Audio::iTunesId, numberTexts(), absent},
         {"itunes_affiliate_token", R"("at1")", "at1", &Audio::affiliateToken, texts(), absent},
         {"hasAudioTrackTimeline", "true", "true", &Audio::hasTrackTimeline, flags(), "false"},
         {"albumArtUrl", R"("a.jpg")", "a.jpg", &Audio::albumArtUrl, urls(), absent}},
        R"({"trackId":123,"track":{)", "}}");
}

TEST(AudioMetadataTest, TheIdentifierStandsBesideTheTrackAndTheNamesInIt) {
    for (const char* json : {R"({"track":{"trackId":123,"trackName":"Song","artistName":"Band"}})",
                             R"({"trackId":123,"trackName":"Song","artistName":"Band"})"}) {
        EXPECT_EQ(parsed<Audio>(Audio::fromJSON, json).second, nothing) << json;
    }
}

} // namespace KeloAPI::testing
