#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLPostSource.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

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

static_assert(!std::is_default_constructible_v<KLPostSource>);
static_assert(std::is_invocable_r_v<std::shared_ptr<KLPostSource>, decltype(KLPostSource::fromJSON),
                                    JsonObject>);
// The addresses may be changed.
static_assert(std::is_same_v<decltype(KLPostSource::thumbnailUrl), std::optional<URL>>);
static_assert(std::is_same_v<decltype(KLPostSource::avatarUrl), std::optional<URL>>);

TEST(PostSourceTest, EveryKeyWithEveryKindOfValue) {
    using S = KLPostSource;
    Reads ids = numberTexts();
    for (const char* beyond64Bits : {"18446744073709551616", "-99999999999999999999"}) {
        ids[beyond64Bits] = beyond64Bits;
    }
    ids["1e3"] = "1000";
    const auto type = [](const S& made) {
        return std::to_string(static_cast<int>(made.contentType));
    };
    // What is outside the four values is unknown.
    const Reads types = {{"true", "1"}, {"2.5", "2"}, {"1.9", "1"}, {"1", "1"},
                         {"2", "2"},    {"4", "0"},   {"-1", "0"},  {"\"1\"", "0"}};
    Reads addresses = urls();
    for (const char* none : {R"("http://h:x/")", R"("\u00e4")", R"("%")"}) {
        addresses[none] = absent;
    }
    checkKeys<S>(S::fromJSON,
                 {{"postId", "12", "12", &S::postId, ids, nothing},
                  {"userId", "34", "34", &S::userId, ids, nothing},
                  {"contentType", "3", "3", type, types, "0"},
                  {"username", R"("ann")", "ann", &S::username, texts(), absent},
                  {"description", R"("hi")", "hi", &S::caption, texts(), absent},
                  {"thumbnailUrl", R"("a/b.jpg")", "a/b.jpg", &S::thumbnailUrl, addresses, absent},
                  {"avatarUrl", R"("b.jpg")", "b.jpg", &S::avatarUrl, addresses, absent}});
}

TEST(PostSourceTest, AContentTypeHasARawValue) {
    EXPECT_EQ(contentTypeOf(0), KLPostSourceContentType::Unknown);
    EXPECT_EQ(contentTypeOf(1), KLPostSourceContentType::Audio);
    EXPECT_EQ(contentTypeOf(2), KLPostSourceContentType::Video);
    EXPECT_EQ(contentTypeOf(3), KLPostSourceContentType::SoundboardAudio);
    for (const std::int64_t none : {std::int64_t{4}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        EXPECT_EQ(contentTypeOf(none), std::nullopt) << none;
    }
}

static_assert(!std::is_default_constructible_v<SoundboardSound>);
static_assert(
    std::is_constructible_v<SoundboardSound, const char*, const char*, const char*, bool>);

TEST(SoundboardSoundParserTest, EveryKeyWithEveryKindOfValue) {
    using S = SoundboardSound;
    Reads sources = identifiers();
    sources[R"("")"] = absent;
    checkParser<SoundboardSoundParser>({
        {"soundId", "8001", "8001", &S::soundId, identifiers(), fails(insufficient)},
        {"sourcePostId", "12", "12", &S::sourcePostId, sources, absent},
        {"name", R"("Bell")", "Bell", &S::name, texts(), ""},
        {"soundUrl", R"("b.m4a")", "b.m4a", &S::soundUrl, urls(), ""},
        {"featured", "true", "true", &S::featured, flags(), "false"},
    });
}

} // namespace KeloAPI::testing
