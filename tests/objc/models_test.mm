// What models are made of, keep, and equal. Their archives are tested beside this file.
#include "objc/Models.hpp"
#include "objc/ObjcTest.hpp"
#include "objc/Told.hpp"

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>

#include <limits>

using namespace KeloObjcTest;

namespace {

id number(double value) {
    return [NSNumber numberWithDouble:value];
}

id yes() {
    return [NSNumber numberWithBool:YES];
}

KLUrlAction *urlAction(NSNumber *closeable, NSURL *others, NSString *texts) {
    return [[[KLUrlAction alloc] initWithReference:@"r3"
                                             title:@"Vote"
                                       actionTitle:@"Go"
                                         actionUrl:address(@"https://a.example/vote?x=1")
                                         closeable:closeable
                                   backgroundImage:others
                                   backgroundVideo:[others URLByAppendingPathComponent:@"video"]
                                           details:texts
                                        actionIcon:[others URLByAppendingPathComponent:@"icon"]
                                      closeUrlPath:[texts stringByAppendingString:@"/close"]]
        autorelease];
}

KLSolicitation *solicitation(NSNumber *closeable, NSString *path) {
    return [[[KLSolicitation alloc] initWithReference:@"r4" closeable:closeable
                                         closeUrlPath:path] autorelease];
}

KLFeedInsert *insert(BOOL closeable) {
    return [[[KLFeedInsert alloc] initWithReference:@"r" closeable:closeable] autorelease];
}

KLLongform *longform() {
    return [[[KLLongform alloc] initWithLongformId:@"abc"
                                               url:address(@"https://v.example/long.mp4")
                                          duration:61.5] autorelease];
}

KLVideoUpload *upload() {
    return [[[KLVideoUpload alloc] initWithMediaId:@"m1"] autorelease];
}

struct Model {
    id object;
    const char *properties;
    const char *values;
};

constexpr const char *postKeys =
    "postId user caption created videoUrl thumbnailUrl liked currentUserRekelo rekeloed";
constexpr const char *longformKeys = "longformId url duration aspectRatio thumbnailUrl canPreload";
constexpr const char *uploadKeys = "mediaId expireDate processingInfo size";
constexpr const char *infoKeys = "state checkAfterSeconds progressPercent";
constexpr const char *mosaicKeys = "posts title subtitle link reference closeable type pinnable";
constexpr const char *actionKeys = "reference title actionTitle actionUrl closeable "
                                   "backgroundImage backgroundVideo details actionIcon "
                                   "closeUrlPath";

std::vector<Model> models() {
    return {
        {[[KLChannel new] autorelease],
         channelKeys,
         R"("" "" "000000" "000000" nil nil nil 0 nil nil nil nil 0)"},
        {wholeChannel(), channelKeys,
         R"("12" "Cats" "ffffff" "123456" <https://i.example/1> <https://i.example/2> )"
         R"(<https://i.example/3> 1 1433146150.5s "All about cats" "cats" KLPagedData 1)"},
        {[[[KLVenue alloc] initWithFoursquareVenueId:@"v1" name:@"Cafe"] autorelease],
         venueKeys,
         R"("v1" "Cafe" nil nil nil nil 0 0 nil)"},
        {wholeVenue(), venueKeys,
         R"("v1" "Café" "1 Main St" "Lisbon" "LX" "PT" 38.7 -9.25 KLVenueCategory)"},
        {[[[KLVenueCategory alloc] initWithCategoryId:@"c1" shortName:@"Coffee"] autorelease],
         categoryKeys,
         R"("c1" "Coffee" nil)"},
        {wholeCategory(), categoryKeys, R"("c1" "Coffee" <https://i.example/c32.png>)"},
        {entity(@"9", @"mention", @"Mia"), entityKeys,
         R"("9" "mention" "Mia" " | kelo://a | b" "kelo://a | b" {3, 4})"},
        {entity(nil, nil, nil), entityKeys,
         R"(nil nil "" " | kelo://a | b" "kelo://a | b" {3, 4})"},
        {tag(@"5", @"cats"), tagKeys, R"("5" "#cats" "cats" 0)"},
        {tag(@"5", @"##a"), tagKeys, R"("5" "##a" "#a" 0)"},
        {tag(nil, nil), tagKeys, R"("" "#" "" 0)"},
        {[[[KLTag alloc] initWithName:@"cats"] autorelease], tagKeys, R"("" "#cats" "cats" 0)"},
        {sound(@"https://s.example/b.m4a", YES, @"12"), soundKeys,
         R"("Bell" "8001" <https://s.example/b.m4a> 1 "12")"},
        {sound(@"", NO, nil), soundKeys, R"("Bell" "8001" <> 0 nil)"},
        {sound(nil, NO, nil), "soundUrl", "<>"},
        {sound(@"not a URL", NO, nil), "soundUrl", "<>"},
        {sound(@"https://cdn.example.com?id=5", YES, nil), "soundUrl",
         "<https://cdn.example.com/?id=5>"},
        {thumbnail(), thumbnailKeys, "<https://cdn.example/a.jpg> 640 9223372036854775807"},
        {[[KLWatchPost new] autorelease], postKeys, "nil nil nil nil nil nil nil nil 0"},
        {[[KLWatchUser new] autorelease], "username loopData", "nil nil"},
        {[[KLLike new] autorelease], "likeId user", "nil nil"},
        {[[KLRekelo new] autorelease], "rekeloId user", "nil nil"},
        {byline(), "text iconUrl entities", "\"by Zo\u00eb \U0001F602\" nil []"},
        {longform(), longformKeys, R"("abc" <https://v.example/long.mp4> 61.5 1 nil 0)"},
        {parsed<KeloAPI::KLLongform>("x", *KeloAPI::URL::parse("https://v.example/"), 3),
         longformKeys, R"("x" <https://v.example/> 3 1 nil 0)"},
        {[[[KLEndlessLikesRange alloc] initWithCount:7 start:1.5 end:2.5 level:3] autorelease],
         "count startTime endTime level",
         "7 1.5 2.5 3"},
        {parsed<KeloAPI::KLEndlessLikesRange>(1, 2, 3, 4), "count startTime endTime level",
         "1 2 3 4"},
        {upload(), uploadKeys, R"("m1" nil nil nil)"},
        {info(KLVideoUploadProcessingStateInProgress), infoKeys, "0 nil nil"},
        {status(KLPostProcessStatusStateStarted), "state", "0"},
        {status(KLPostProcessStatusStateCompleted), "state", "1"},
        {status(KLPostProcessStatusStateFailed), "state", "2"},
        {parsed<KeloAPI::KLPostProcessStatus>(KeloAPI::KLPostProcessStatusState::Failed), "state",
         "2"},
        {loops(std::numeric_limits<uint64_t>::max(), 2.5), "count velocity onFire",
         "18446744073709551615 2.5 0"},
        {insert(YES), "reference closeable", R"("r" 1)"},
        {insert(NO), "reference closeable", R"("r" 0)"},
        {postsMosaic(YES, KLPostsMosaicTypeSmallThumbnails, NO), mosaicKeys,
         R"(KLPagedData "Dogs" "of today" "kelo://dogs" "r1" 1 3 0)"},
        {postsMosaic(NO, KLPostsMosaicTypeUnknown, YES), mosaicKeys,
         R"(KLPagedData "Dogs" "of today" "kelo://dogs" "r1" 0 0 1)"},
        {userMosaic(page(), YES), "users title subtitle link reference closeable",
         R"(KLPagedData "People" "" "kelo://near" "r2" 1)"},
        {userMosaic(page(), NO), "closeable", "0"},
        {urlAction(yes(), address(@"https://a.example/image"), @"now"), actionKeys,
         R"("r3" "Vote" "Go" <https://a.example/vote?x=1> 1 <https://a.example/image> )"
         R"(<https://a.example/image/video> "now" <https://a.example/image/icon> "now/close")"},
        {urlAction(nil, nil, nil), actionKeys,
         R"("r3" "Vote" "Go" <https://a.example/vote?x=1> 0 nil nil nil nil nil)"},
        {urlAction([NSNumber numberWithBool:NO], nil, nil), "closeable", "0"},
        {solicitation(yes(), @"close/4"), "reference closeable closeUrlPath",
         R"("r4" 1 "close/4")"},
        {solicitation(nil, nil), "reference closeable closeUrlPath", R"("r4" 0 nil)"},
    };
}

struct Change {
    id object;
    const char *property;
    id value;
    const char *kept;
    /// After nil; null where that is not taken.
    const char *cleared;
};

std::vector<Change> changes() {
    id channel = wholeChannel();
    id venue = wholeVenue();
    id post = [[KLWatchPost new] autorelease];
    id user = [[KLWatchUser new] autorelease];
    id state = info(KLVideoUploadProcessingStateInProgress);
    id video = upload();
    id film = longform();
    id loop = loops(1, 1);
    id icon = address(@"https://i.example/9");
    id date = [NSDate dateWithTimeIntervalSince1970:1.5];
    id rekelo = [[KLRekelo new] autorelease];
    return {
        {channel, "channelId", @"13", R"("13")", R"("")"},
        {channel, "name", @"Dogs", R"("Dogs")", R"("")"},
        {channel, "fontColorHex", @"1", R"("1")", R"("")"},
        {channel, "backgroundColorHex", @"2", R"("2")", R"("")"},
        {channel, "iconUrl", address(@""), "<>", "nil"},
        {channel, "iconRetinaUrl", address(@""), "<>", "nil"},
        {channel, "exploreIconRetinaUrl", address(@""), "<>", "nil"},
        {channel, "created", date, "1.5s", "nil"},
        {channel, "channelDescription", @"D", R"("D")", "nil"},
        {channel, "vanityPathSuffix", @"d", R"("d")", "nil"},
        {channel, "timelineData", page(), "KLPagedData", "nil"},
        {channel, "following", number(0), "0", nullptr},
        {channel, "showRecent", number(0), "0", nullptr},
        {venue, "address", @"a", R"("a")", "nil"},
        {venue, "city", @"b", R"("b")", "nil"},
        {venue, "state", @"c", R"("c")", "nil"},
        {venue, "country", @"d", R"("d")", "nil"},
        {venue, "latitude", number(-1.5), "-1.5", nullptr},
        {venue, "longitude", number(2.5), "2.5", nullptr},
        {venue, "category", wholeCategory(), "KLVenueCategory", "nil"},
        {wholeCategory(), "iconUrl", address(@""), "<>", "nil"},
        {tag(@"5", @"cats"), "count", number(7), "7", nullptr},
        {post, "postId", @"7", R"("7")", "nil"},
        {post, "user", user, "KLWatchUser", "nil"},
        {post, "caption", @"caption", R"("caption")", "nil"},
        {post, "created", date, "1.5s", "nil"},
        {post, "videoUrl", @"v", R"("v")", "nil"},
        {post, "thumbnailUrl", @"t", R"("t")", "nil"},
        {post, "liked", [NSNumber numberWithBool:NO], "0", "nil"},
        {post, "currentUserRekelo", rekelo, "KLRekelo", "nil"},
        {user, "username", @"mara", R"("mara")", "nil"},
        {user, "loopData", loop, "KLLoopData", "nil"},
        {[[KLLike new] autorelease], "likeId", @"1", R"("1")", "nil"},
        {[[KLLike new] autorelease], "user", user, "KLWatchUser", "nil"},
        {rekelo, "rekeloId", @"1", R"("1")", "nil"},
        {rekelo, "user", user, "KLWatchUser", "nil"},
        {byline(), "iconUrl", icon, "<https://i.example/9>", "nil"},
        {film, "aspectRatio", number(0.5625), "0.5625", nullptr},
        {film, "thumbnailUrl", icon, "<https://i.example/9>", "nil"},
        {film, "canPreload", yes(), "1", nullptr},
        {film, "canPreload", number(0), "0", nullptr},
        {video, "expireDate", date, "1.5s", "nil"},
        {video, "processingInfo", state, "KLVideoUploadProcessingInfo", "nil"},
        {video, "size", [NSNumber numberWithLongLong:std::numeric_limits<int64_t>::min()],
         "-9223372036854775808", "nil"},
        {state, "checkAfterSeconds", [NSNumber numberWithInt:5], "5", "nil"},
        {state, "progressPercent", number(42.5), "42.5", "nil"},
        {loop, "count", [NSNumber numberWithInt:42], "42", nullptr},
        {loop, "velocity", number(2.5), "2.5", nullptr},
        {loop, "created", date, "1.5s", nullptr},
        {loop, "onFire", yes(), "1", nullptr},
        {loop, "onFire", number(0), "0", nullptr},
    };
}

} // namespace

TEST(ModelsTest, TellWhatTheyAreMadeOf) {
    for (const Model &one : models()) {
        EXPECT_EQ(told(one.object, one.properties), one.values) << told(one.object);
    }
}

TEST(ModelsTest, KeepWhatIsSet) {
    for (const Change &one : changes()) {
        NSString *key = [NSString stringWithUTF8String:one.property];
        [one.object setValue:one.value forKey:key];
        EXPECT_EQ(told(one.object, one.property), one.kept) << told(one.object) << one.property;
        id kept = [one.object valueForKey:key];
        EXPECT_TRUE(kept == one.value || ![kept isKindOfClass:[KLBridged class]]) << one.property;
        if (one.cleared != nullptr) {
            [one.object setValue:nil forKey:key];
            EXPECT_EQ(told(one.object, one.property), one.cleared) << one.property;
        }
    }
}
