// The library's own parsers, as a host uses them.
#include "objc/EndpointTest.hpp"
#include "objc/HostCode.h"

#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

/// Counts what it makes.
@interface CountingTagParser : KLTagParser {
@public
    int made;
}
@end

@implementation CountingTagParser
- (id)parse:(NSDictionary *)json error:(NSError **)error {
    id tag = [super parse:json error:error];
    made += tag == nil ? 0 : 1;
    return tag;
}
@end

namespace {

/// What `parser` makes, where it is of that class; fails otherwise.
id made(AnyObjectJsonParser *parser, const char *text, Class expected) {
    NSError *failure = nil;
    id object = [[parser autorelease] parse:json(text) error:&failure];
    EXPECT_TRUE([object isMemberOfClass:expected])
        << class_getName([parser class]) << ": " << [[failure description] UTF8String];
    EXPECT_EQ(failure, nil);
    return object;
}

int failure(AnyObjectJsonParser *parser, const char *text) {
    NSError *failure = nil;
    EXPECT_EQ([[parser autorelease] parse:json(text) error:&failure], nil);
    EXPECT_TRUE(same([failure domain], @"KeloAPI.JsonParseError"));
    return static_cast<int>([failure code]);
}

enum { IncorrectType = 2, InsufficientData = 3, InvalidData = 4 };

class NativeParsersEndpointTest : public EndpointTest {};

} // namespace

TEST(NativeParsersTest, Tags) {
    KLTag *tag = made([KLTagParser new], R"({"tagId": 5, "tag": "cats"})", [KLTag class]);
    EXPECT_TRUE(same(tag.tagId, @"5"));
    EXPECT_TRUE(same(tag.name, @"#cats"));
    EXPECT_EQ(failure([KLTagParser new], "{}"), InsufficientData);
}

TEST(NativeParsersTest, Entities) {
    const auto parser = [] { return [[KLEntityParser alloc] initWithText:@"Hi \U0001F600 Mara"]; };
    KLEntity *entity =
        made(parser(), R"({"range": [5, 9], "type": "user", "id": 3})", [KLEntity class]);
    EXPECT_TRUE(NSEqualRanges(entity.range, NSMakeRange(6, 4)));
    EXPECT_TRUE(same(entity.type, @"user"));
    EXPECT_EQ(failure(parser(), "{}"), InsufficientData);
    EXPECT_EQ(failure(parser(), R"({"range": [5, 90]})"), InvalidData);
}

TEST(NativeParsersTest, Bylines) {
    KLByline *byline =
        made([KLBylineParser new],
             R"({"body": "By Mara", "iconUrl": "https://h.example/i", "entities": [{}]})",
             [KLByline class]);
    EXPECT_TRUE(same(byline.text, @"By Mara"));
    EXPECT_TRUE(same(byline.entities, [NSArray array]));
    EXPECT_EQ(failure([KLBylineParser new], "{}"), InsufficientData);
}

TEST(NativeParsersTest, Venues) {
    KLVenue *venue = made([KLVenueParser new],
                          R"({"foursquareVenueId": "v1", "venueName": "Cafe",
                              "venueCity": "Oslo"})",
                          [KLVenue class]);
    EXPECT_TRUE(same(venue.city, @"Oslo"));
    venue = made([KLFoursquareVenueParser new],
                 R"({"id": "v2", "name": "Bar", "location": {"lat": 1.5}})", [KLVenue class]);
    EXPECT_TRUE(same(venue.foursquareVenueId, @"v2"));
    EXPECT_EQ(venue.latitude, 1.5);
    EXPECT_EQ(failure([KLVenueParser new], R"({"id": "v2", "name": "Bar"})"), InsufficientData);
    EXPECT_EQ(failure([KLFoursquareVenueParser new], "{}"), InsufficientData);
}

TEST(NativeParsersTest, FeedInserts) {
    const char *action = R"({"type": "urlAction", "reference": "r", "title": "t",
                             "actionTitle": "go", "actionLink": "https://h.example/"})";
    const char *solicitation = R"({"type": "solicitation", "reference": "r"})";
    KLUrlAction *made1 = made([KLUrlActionParser new], action, [KLUrlAction class]);
    EXPECT_TRUE(same(made1.actionTitle, @"go"));
    KLSolicitation *made2 = made([KLSolicitationParser new], solicitation, [KLSolicitation class]);
    EXPECT_TRUE(same(made2.reference, @"r"));
    EXPECT_EQ(failure([KLUrlActionParser new], solicitation), IncorrectType);
    EXPECT_EQ(failure([KLSolicitationParser new], action), IncorrectType);
}

TEST(NativeParsersTest, PostsAndWhatIsDoneToThem) {
    KLWatchPost *post = made([PostParser new], R"({"postId": 7})", [KLWatchPost class]);
    EXPECT_TRUE(same(post.postId, @"7"));
    KLWatchUser *user = made([UserParser new], R"({"username": "mara"})", [KLWatchUser class]);
    EXPECT_TRUE(same(user.username, @"mara"));
    KLLike *like = made([LikeParser new], R"({"likeId": 8})", [KLLike class]);
    EXPECT_TRUE(same(like.likeId, @"8"));
    KLRekelo *rekelo = made([RekeloParser new], R"({"repostId": 9})", [KLRekelo class]);
    EXPECT_TRUE(same(rekelo.rekeloId, @"9"));
    SoundboardSound *sound =
        made([SoundboardSoundParser new], R"({"soundId": 3})", [SoundboardSound class]);
    EXPECT_TRUE(same(sound.soundId, @"3"));
    EXPECT_EQ(failure([SoundboardSoundParser new], "{}"), InsufficientData);
}

TEST(NativeParsersTest, Loops) {
    KLLoopData *loops =
        made([LoopDataParser new], R"({"count": 12, "velocity": 2})", [KLLoopData class]);
    EXPECT_TRUE(same(loops.count, [NSNumber numberWithInt:12]));
    KLLongform *longform =
        made([KLLongformParser new],
             R"({"longformId": "l", "videoUrl": "https://h.example/v", "duration": 3})",
             [KLLongform class]);
    EXPECT_EQ(longform.duration, 3);
    KLLongformViews *views = made([KLLongformViewsParser new], R"({"longformId": "l", "count": 4})",
                                  [KLLongformViews class]);
    EXPECT_EQ(views.count, 4);
    KLEndlessLikesRange *range = made([KLEndlessLikesRangeParser new],
                                      R"({"count": 1, "startTime": 2, "endTime": 3, "level": 4})",
                                      [KLEndlessLikesRange class]);
    EXPECT_EQ(range.level, 4);
    KLPostProcessStatus *status = made([KLPostProcessStatusParser new], R"({"state": "completed"})",
                                       [KLPostProcessStatus class]);
    EXPECT_EQ(status.state, KLPostProcessStatusStateCompleted);
    KLVideoUpload *upload =
        made([KLVideoUploadParser new], R"({"mediaId": 6})", [KLVideoUpload class]);
    EXPECT_TRUE(same(upload.mediaId, @"6"));
    for (Class one : {[LoopDataParser class],
                      [KLLongformParser class],
                      [KLLongformViewsParser class],
                      [KLEndlessLikesRangeParser class],
                      [KLPostProcessStatusParser class],
                      [KLVideoUploadParser class]}) {
        EXPECT_EQ(failure([one new], "{}"), InsufficientData);
    }
    EXPECT_EQ(failure([KLPostProcessStatusParser new], R"({"state": "odd"})"), InvalidData);
}

TEST(NativeParsersTest, Nothing) {
    made([KLEmptyParser new], R"({"what": "ever"})", [KLEmpty class]);
}

TEST(NativeParsersTest, Pages) {
    KLPagedDataParser *parser =
        [[KLPagedDataParser alloc] initWithItemParser:[[KLTagParser new] autorelease]];
    KLPagedData *page =
        made(parser, R"({"nextPage": 2, "records": [{"tagId": 1, "tag": "a"}, {}]})",
             [KLPagedData class]);
    EXPECT_EQ(page.count, 1);
    EXPECT_TRUE(page.hasNextPage);
    EXPECT_TRUE([[page objectAtIndex:0] isMemberOfClass:[KLTag class]]);
}

TEST(NativeParsersTest, Channels) {
    const char *text = R"({"channelId": 3, "channel": "Cats",
                           "timeline": {"records": [{"name": "a"}, {}, {"name": "b"}]}})";
    KLChannel *channel = made([KLChannelParser new], text, [KLChannel class]);
    EXPECT_EQ(channel.timelineData, nil);
    channel = made([[KLChannelParser alloc] initWithTimelineParser:nil], text, [KLChannel class]);
    EXPECT_EQ(channel.timelineData, nil);
    KLPagedDataParser *timeline =
        [[[KLPagedDataParser alloc] initWithItemParser:[[TagParser new] autorelease]] autorelease];
    channel =
        made([[KLChannelParser alloc] initWithTimelineParser:timeline], text, [KLChannel class]);
    EXPECT_EQ(channel.timelineData.count, 2);
    EXPECT_EQ(failure([KLChannelParser new], "{}"), InsufficientData);
}

TEST(NativeParsersTest, CrossAsThemselves) {
    KLTagParser *parser = [[KLTagParser new] autorelease];
    EXPECT_EQ(toObjC(toNative(parser)), parser);
    const auto native = toNative<KeloAPI::AnyObjectJsonParser>(parser);
    const auto read = KeloAPI::JsonDocument::parse(R"({"tagId": 1, "tag": "a"})");
    const auto tag = native->parse(*read.value().root().object());
    EXPECT_NE(std::dynamic_pointer_cast<KeloAPI::KLTag>(tag), nullptr);
}

TEST(NativeParsersTest, MayBeDerivedFrom) {
    CountingTagParser *parser = [[CountingTagParser new] autorelease];
    const auto native = toNative<KeloAPI::AnyObjectJsonParser>(parser);
    const auto read = KeloAPI::JsonDocument::parse(R"({"tagId": 1, "tag": "a"})");
    const auto tag = native->parse(*read.value().root().object());
    EXPECT_NE(std::dynamic_pointer_cast<KeloAPI::KLTag>(tag), nullptr);
    EXPECT_EQ(parser->made, 1);
    EXPECT_EQ(toObjC(native), parser);
    EXPECT_EQ(failure([CountingTagParser new], "{}"), InsufficientData);
}

TEST_F(NativeParsersEndpointTest, ParseAnswers) {
    Endpoint *endpoint = [[[Endpoint alloc] initWithSession:registrySession()] autorelease];
    [endpoint requestWithParser:[[KLTagParser new] autorelease]
                         target:listener
                         action:@selector(heard:and:and:and:)];
    ASSERT_TRUE(answered(R"({"data": {"records": [{"tagId": 1, "tag": "a"}]}})"));
    KLTag *tag = [[[listener.calls lastObject] objectAtIndex:0] lastObject];
    EXPECT_TRUE(same(tag.name, @"#a"));
}
