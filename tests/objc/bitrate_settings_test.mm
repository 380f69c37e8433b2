#include "objc/ObjcTest.hpp"

#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

NSURL *url(NSString *path) {
    return [NSURL URLWithString:[@"https://v.example/" stringByAppendingString:path]];
}

KLVideoUrlBitrateSetting *setting(NSURL *remoteUrl, NSString *identifier, NSString *version) {
    return [[[KLVideoUrlBitrateSetting alloc] initWithRemoteUrl:remoteUrl
                                                         format:@"h264"
                                                     identifier:identifier
                                                     minBitrate:2.5
                                                        version:version] autorelease];
}

KLVideoUrlBitrateSetting *offer(NSString *format, double minBitrate) {
    NSString *path = [NSString stringWithFormat:@"%@/%g", format, minBitrate];
    return [[[KLVideoUrlBitrateSetting alloc] initWithRemoteUrl:url(path)
                                                         format:format
                                                     identifier:nil
                                                     minBitrate:minBitrate
                                                        version:nil] autorelease];
}

KLVideoUrlBitrateSettings *offers(NSArray *settings) {
    return [[[KLVideoUrlBitrateSettings alloc] initWithBitrateSettings:settings] autorelease];
}

} // namespace

TEST(KLVideoFileFormatTest, NamesTheFormats) {
    EXPECT_TRUE(same([KLVideoFileFormat MP4], @"h264"));
    EXPECT_TRUE(same([KLVideoFileFormat HLS], @"hls"));
    EXPECT_TRUE(same([KLVideoFileFormat PREVIEW], @"h264-preview"));
    EXPECT_TRUE(same(KLVideoFileFormat.MP4, @"h264"));
}

TEST(KLVideoUrlBitrateSettingTest, KeepsWhatItIsMadeOf) {
    KLVideoUrlBitrateSetting *whole = setting(url(@"a.mp4"), @"1234", @"77");
    EXPECT_TRUE(same(whole.remoteUrl, url(@"a.mp4")));
    EXPECT_TRUE(same(whole.format, @"h264"));
    EXPECT_TRUE(same(whole.identifier, @"1234"));
    EXPECT_EQ(whole.minBitrate, 2.5);
    EXPECT_TRUE(same(whole.version, @"77"));
    EXPECT_TRUE(same(whole.uniqueId, @"1234-77"));
}

TEST(KLVideoUrlBitrateSettingTest, NamesAFileByItsURLWithoutIdentity) {
    KLVideoUrlBitrateSetting *bare = setting(url(@"a.mp4"), nil, nil);
    EXPECT_EQ(bare.identifier, nil);
    EXPECT_EQ(bare.version, nil);
    const KeloAPI::KLVideoUrlBitrateSetting there(*KeloAPI::URL::parse("https://v.example/a.mp4"),
                                                  "hls", std::nullopt, 1, std::nullopt);
    EXPECT_EQ([bare.uniqueId UTF8String], there.uniqueId);
    EXPECT_TRUE(same(setting(url(@"a.mp4"), @"1234", nil).uniqueId, bare.uniqueId));
    EXPECT_TRUE(same(setting(url(@"a.mp4"), nil, @"77").uniqueId, bare.uniqueId));
    EXPECT_FALSE(same(setting(url(@"b.mp4"), nil, nil).uniqueId, bare.uniqueId));
}

TEST(KLVideoUrlBitrateSettingTest, TakesAnEmptyURL) {
    KLVideoUrlBitrateSetting *empty = setting([NSURL URLWithString:@""], @"1234", @"77");
    EXPECT_TRUE(same([empty.remoteUrl absoluteString], @""));
}

TEST(KLVideoUrlBitrateSettingsTest, StartsWithoutOffers) {
    KLVideoUrlBitrateSettings *none = [[KLVideoUrlBitrateSettings new] autorelease];
    EXPECT_TRUE(same(none.settings, [NSArray array]));
    EXPECT_TRUE(same(offers(nil).settings, [NSArray array]));
    EXPECT_EQ([none settingForRemoteURL:url(@"hls/1")], nil);
    EXPECT_EQ([none settingForFormat:@"h264" bitrate:1], nil);
    EXPECT_EQ([none highestSettingForFormat:@"h264"], nil);
    EXPECT_TRUE(same([none settingsForFormat:@"h264"], [NSArray array]));
}

TEST(KLVideoUrlBitrateSettingsTest, SortsWhatItIsMadeOf) {
    id low = offer(@"h264", 200);
    id middle = offer(@"hls", 500);
    id high = offer(@"h264", 1000);
    NSArray *given = [NSArray arrayWithObjects:high, low, middle, nil];
    NSArray *sorted = [NSArray arrayWithObjects:low, middle, high, nil];
    EXPECT_TRUE(same(offers(given).settings, sorted)) << "the same objects";
}

TEST(KLVideoUrlBitrateSettingsTest, KeepsWhatIsSetAsGiven) {
    id low = offer(@"h264", 200);
    id high = offer(@"h264", 1000);
    KLVideoUrlBitrateSettings *settings = [[KLVideoUrlBitrateSettings new] autorelease];
    NSMutableArray *given = [NSMutableArray arrayWithObjects:high, low, nil];
    settings.settings = given;
    [given removeAllObjects];
    NSArray *asGiven = [NSArray arrayWithObjects:high, low, nil];
    EXPECT_TRUE(same(settings.settings, asGiven));
    settings.settings = nil;
    EXPECT_TRUE(same(settings.settings, [NSArray array]));
}

TEST(KLVideoUrlBitrateSettingsTest, HoldsSettingsAlone) {
    KLVideoUrlBitrateSettings *settings = [[KLVideoUrlBitrateSettings new] autorelease];
    NSException *exception = raised([&] { settings.settings = [NSArray arrayWithObject:@"x"]; });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(KLVideoUrlBitrateSettingsTest, ChoosesByBitrate) {
    id low = offer(@"h264", 200);
    id middle = offer(@"h264", 500);
    id high = offer(@"h264", 1000);
    id other = offer(@"hls", 300);
    KLVideoUrlBitrateSettings *all =
        offers([NSArray arrayWithObjects:low, other, middle, high, nil]);
    EXPECT_EQ([all settingForFormat:@"h264" bitrate:100], low);
    EXPECT_EQ([all settingForFormat:@"h264" bitrate:200], low);
    EXPECT_EQ([all settingForFormat:@"h264" bitrate:700], middle);
    EXPECT_EQ([all settingForFormat:@"h264" bitrate:5000], high);
    EXPECT_EQ([all settingForFormat:@"hls" bitrate:0], other);
    EXPECT_EQ([all settingForFormat:@"h264-preview" bitrate:700], nil);
    EXPECT_EQ([all settingForFormat:nil bitrate:700], nil);
}

TEST(KLVideoUrlBitrateSettingsTest, FindsByFormatAndURL) {
    id low = offer(@"h264", 200);
    id high = offer(@"h264", 1000);
    id other = offer(@"hls", 5000);
    KLVideoUrlBitrateSettings *all = offers([NSArray arrayWithObjects:other, high, low, nil]);
    EXPECT_EQ([all highestSettingForFormat:@"h264"], high);
    EXPECT_EQ([all highestSettingForFormat:@"H264"], nil);
    NSArray *ofFormat = [NSArray arrayWithObjects:low, high, nil];
    EXPECT_TRUE(same([all settingsForFormat:@"h264"], ofFormat));
    EXPECT_EQ([all settingForRemoteURL:url(@"h264/1000")], high);
    EXPECT_EQ([all settingForRemoteURL:url(@"h264/1001")], nil);
    EXPECT_EQ([all settingForRemoteURL:nil], nil);
}

TEST(KLVideoUrlBitrateSettingsTest, StandsForTheLibrarysOwn) {
    const auto there = std::make_shared<KeloAPI::KLVideoUrlBitrateSettings>();
    KLVideoUrlBitrateSettings *here = toObjC(there);
    ASSERT_TRUE([here isMemberOfClass:[KLVideoUrlBitrateSettings class]]);
    const auto one = std::make_shared<KeloAPI::KLVideoUrlBitrateSetting>(
        *KeloAPI::URL::parse("https://v.example/"), "hls", "1", 1, "2");
    there->setSettings({one});
    EXPECT_TRUE([[here.settings objectAtIndex:0] isMemberOfClass:[KLVideoUrlBitrateSetting class]]);
    EXPECT_EQ([here highestSettingForFormat:@"hls"], toObjC(one));
}

TEST(KLVideoUrlBitrateSettingParserTest, ReadsJson) {
    KLVideoUrlBitrateSettingParser *parser =
        [[[KLVideoUrlBitrateSettingParser alloc] initWithIdentifier:@"42"] autorelease];
    EXPECT_TRUE(same(parser.identifier, @"42"));
    NSError *error = nil;
    KLVideoUrlBitrateSetting *whole =
        [parser parse:json(R"({"videoUrl": "https://v.example/a", "format": "hls", "rate": 1.5,
                               "id": "7"})")
                error:&error];
    EXPECT_EQ(error, nil);
    EXPECT_TRUE(same(whole.remoteUrl, url(@"a")));
    EXPECT_TRUE(same(whole.format, @"hls"));
    EXPECT_EQ(whole.minBitrate, 1.5);
    EXPECT_TRUE(same(whole.uniqueId, @"42-7"));
    KLVideoUrlBitrateSetting *bare =
        [parser parse:json(R"({"videoUrl": "https://v.example/a", "format": "h264",
                               "rate": "500"})")
                error:nullptr];
    EXPECT_EQ(bare.minBitrate, 0);
    EXPECT_EQ(bare.version, nil);
    EXPECT_TRUE(same(bare.identifier, @"42"));
    EXPECT_TRUE(same(bare.uniqueId, setting(url(@"a"), nil, nil).uniqueId));
}

TEST(KLVideoUrlBitrateSettingParserTest, TellsWhatIsMissing) {
    KLVideoUrlBitrateSettingParser *parser =
        [[[KLVideoUrlBitrateSettingParser alloc] initWithIdentifier:@"42"] autorelease];
    for (const char *text : {"{}", R"({"format": "hls"})", R"({"videoUrl": "https://v.example/"})",
                             R"({"videoUrl": "not a URL", "format": "hls"})",
                             R"({"videoUrl": "https://v.example/", "format": 5})"}) {
        NSError *error = nil;
        EXPECT_EQ([parser parse:json(text) error:&error], nil);
        EXPECT_TRUE(same([error domain], @"KeloAPI.JsonParseError")) << text;
        EXPECT_EQ([error code], 3) << text;
        EXPECT_EQ([parser parse:json(text) error:nullptr], nil);
    }
    NSDictionary *const untold[] = {
        nil, [NSDictionary
                 dictionaryWithObjectsAndKeys:[NSDate date], @"videoUrl", @"hls", @"format", nil]};
    for (NSDictionary *one : untold) {
        NSError *error = nil;
        EXPECT_EQ([parser parse:one error:&error], nil);
        EXPECT_EQ([error code], 3);
        EXPECT_EQ([parser parse:one error:nullptr], nil);
    }
}

TEST(KLVideoUrlBitrateSettingDeathTest, NeedsAnIdentityOrAURL) {
    EXPECT_DEATH(setting([NSURL URLWithString:@""], @"1234", nil), "a bitrate setting needs a URL");
}
