#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPostAudioMetadata.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::absent;
using testing::JsonText;
using testing::KeyTable;
using testing::nothing;

static_assert(!std::is_default_constructible_v<KLPostAudioMetadata>);
static_assert(std::is_invocable_r_v<std::shared_ptr<KLPostAudioMetadata>,
                                    decltype(KLPostAudioMetadata::fromJSON), JsonObject>);

namespace {

template <class Member>
auto showingAudioMetadata(Member member) {
    return testing::showing<KLPostAudioMetadata>(member);
}

std::shared_ptr<KLPostAudioMetadata> audio(const std::string& json) {
    return KLPostAudioMetadata::fromJSON(JsonText(json).object());
}

} // namespace

TEST(AudioMetadataTest, EveryKeyBesideTheTrackWithEveryKindOfValue) {
    const KeyTable<KLPostAudioMetadata>::Rules rules = {
        {"trackId", "123", "123", showingAudioMetadata(&KLPostAudioMetadata::trackId),
         testing::numberTexts(), nothing},
        {"track",
         R"({"trackName":"Song","artistName":"Band"})",
         "Song",
         showingAudioMetadata(&KLPostAudioMetadata::trackName),
         {},
         nothing},
    };
    KeyTable<KLPostAudioMetadata>(KLPostAudioMetadata::fromJSON, rules).check();
}

TEST(AudioMetadataTest, EveryKeyOfTheTrackWithEveryKindOfValue) {
    const KeyTable<KLPostAudioMetadata>::Rules rules = {
        {"trackName", R"("Song")", "Song", showingAudioMetadata(&KLPostAudioMetadata::trackName),
         testing::texts(), nothing},
        {"artistName", R"("Band")", "Band", showingAudioMetadata(&KLPostAudioMetadata::artistName),
         testing::texts(), nothing},
        {"itunesId", "99", "99", showingAudioMetadata(&KLPostAudioMetadata::iTunesId),
         testing::numberTexts(), absent},
        {"itunes_affiliate_token", R"("at1")", "at1",
         showingAudioMetadata(&KLPostAudioMetadata::affiliateToken), testing::texts(), absent},
        {"hasAudioTrackTimeline", "true", "true",
         showingAudioMetadata(&KLPostAudioMetadata::hasTrackTimeline), testing::flags(), "false"},
        {"albumArtUrl", R"("https://i.example/a.jpg")", "https://i.example/a.jpg",
         showingAudioMetadata(&KLPostAudioMetadata::albumArtUrl), testing::urls(), absent},
    };
    KeyTable<KLPostAudioMetadata>(
        KLPostAudioMetadata::fromJSON, rules,
        [](const std::string& members) { return R"({"trackId":123,"track":{)" + members + "}}"; })
        .check();
}

TEST(AudioMetadataTest, TheTrackIdentifierStandsBesideTheTrack) {
    const auto made = audio(R"({"trackId":123,"track":{"trackName":"Song","artistName":"Band"}})");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->trackId, "123");
    EXPECT_EQ(made->iTunesId(), std::nullopt);
    EXPECT_EQ(made->affiliateToken(), std::nullopt);
    EXPECT_FALSE(made->hasTrackTimeline());
    EXPECT_EQ(made->albumArtUrl, std::nullopt);
    EXPECT_EQ(audio(R"({"track":{"trackId":123,"trackName":"Song","artistName":"Band"}})"),
              nullptr);
    EXPECT_EQ(audio(R"({"trackId":123,"trackName":"Song","artistName":"Band"})"), nullptr)
        << "the names stand in the track";
}

TEST(AudioMetadataTest, NamesIdentifierAndArtMayBeChanged) {
    const auto made = audio(R"({"trackId":1,"track":{"trackName":"Song","artistName":"Band"}})");
    ASSERT_NE(made, nullptr);
    made->artistName = "B";
    made->trackName = "S";
    made->trackId = "x";
    made->albumArtUrl = URL::parse("a.jpg");
    EXPECT_EQ(made->artistName + made->trackName + made->trackId, "BSx");
    EXPECT_EQ(made->albumArtUrl, URL::parse("a.jpg"));
}

} // namespace KeloAPI
