#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

KLPostAudioMetadata *audio(const char *text) {
    return [[[KLPostAudioMetadata alloc] initWithJson:json(text)] autorelease];
}

KLPostAudioMetadata *bare() {
    return audio(R"({"trackId": 123, "track": {"trackName": "Song", "artistName": "Band"}})");
}

} // namespace

TEST(KLPostAudioMetadataTest, ReadsJson) {
    KLPostAudioMetadata *whole = audio(R"({"trackId": 123456789012,
                  "track": {"trackName": "Song", "artistName": "Band", "itunesId": 77,
                            "itunes_affiliate_token": "tok", "hasAudioTrackTimeline": true,
                            "albumArtUrl": "https://a.example/art.png"}})");
    EXPECT_TRUE(same(whole.trackName, @"Song"));
    EXPECT_TRUE(same(whole.artistName, @"Band"));
    EXPECT_TRUE(same(whole.trackId, @"123456789012"));
    EXPECT_TRUE(same(whole.iTunesId, [NSNumber numberWithInt:77]));
    EXPECT_TRUE(same(whole.affiliateToken, @"tok"));
    EXPECT_TRUE(whole.hasTrackTimeline);
    EXPECT_TRUE(same(whole.albumArtUrl, [NSURL URLWithString:@"https://a.example/art.png"]));
}

TEST(KLPostAudioMetadataTest, IntegersNeverPassThroughADouble) {
    NSMutableDictionary *whole = [NSMutableDictionary
        dictionaryWithDictionary:json(R"({"track": {"trackName": "", "artistName": ""}})")];
    [whole setObject:[NSNumber numberWithLongLong:9007199254740993] forKey:@"trackId"];
    KLPostAudioMetadata *audio = [[[KLPostAudioMetadata alloc] initWithJson:whole] autorelease];
    EXPECT_TRUE(same(audio.trackId, @"9007199254740993"));
}

TEST(KLPostAudioMetadataTest, MostMayBeMissing) {
    EXPECT_TRUE(same(bare().trackId, @"123"));
    EXPECT_EQ(bare().iTunesId, nil);
    EXPECT_EQ(bare().affiliateToken, nil);
    EXPECT_FALSE(bare().hasTrackTimeline);
    EXPECT_EQ(bare().albumArtUrl, nil);
}

TEST(KLPostAudioMetadataTest, WhatLacksARequiredValueIsNone) {
    EXPECT_EQ(audio("{}"), nil);
    EXPECT_EQ(audio(R"({"trackId": 123})"), nil);
    EXPECT_EQ(audio(R"({"trackId": 123, "track": {"trackName": "Song"}})"), nil);
    EXPECT_EQ(audio(R"({"trackId": 123, "track": {"artistName": "Band"}})"), nil);
    EXPECT_EQ(audio(R"({"trackId": "123",
                        "track": {"trackName": "Song", "artistName": "Band"}})"),
              nil);
    EXPECT_EQ(audio(R"({"track": {"trackName": "Song", "artistName": "Band", "trackId": 123}})"),
              nil);
}

TEST(KLPostAudioMetadataTest, NeedsAnObject) {
    EXPECT_EQ([[[KLPostAudioMetadata alloc] initWithJson:nil] autorelease], nil);
}

TEST(KLPostAudioMetadataTest, KeepsWhatIsSet) {
    KLPostAudioMetadata *one = bare();
    one.artistName = @"Other";
    one.trackName = @"Tune";
    one.trackId = @"5";
    one.albumArtUrl = [NSURL URLWithString:@"https://a.example/2.png"];
    EXPECT_TRUE(same(one.artistName, @"Other"));
    EXPECT_TRUE(same(one.trackName, @"Tune"));
    EXPECT_TRUE(same(one.trackId, @"5"));
    const auto &there = held<KeloAPI::KLPostAudioMetadata>(one);
    EXPECT_EQ(there.artistName, "Other");
    EXPECT_EQ(there.trackName, "Tune");
    EXPECT_EQ(there.trackId, "5");
    EXPECT_EQ(there.albumArtUrl->absoluteString(), "https://a.example/2.png");
    one.albumArtUrl = nil;
    EXPECT_EQ(one.albumArtUrl, nil);
}
