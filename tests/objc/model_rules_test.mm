// How models behave beyond keeping values.
#include "objc/Models.hpp"
#include "objc/ObjcTest.hpp"
#include "objc/Told.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/KLVideoUploadProcessingInfo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <tuple>

using namespace KeloBridge;
using namespace KeloObjcTest;

TEST(ModelRulesTest, TheLibrarySeesWhatIsSet) {
    KLWatchPost *post = [[KLWatchPost new] autorelease];
    const auto native = toNative<KeloAPI::KLWatchPost>(post);
    post.liked = [NSNumber numberWithBool:NO];
    EXPECT_EQ(native->liked, false);
    post.liked = nil;
    EXPECT_FALSE(native->liked);
    post.currentUserRekelo = [[KLRekelo new] autorelease];
    EXPECT_TRUE(post.rekeloed);
    post.currentUserRekelo = nil;
    EXPECT_FALSE(post.rekeloed);
    EXPECT_EQ(toObjC(native), post);
    KLEntity *mention = entity(@"9", @"mention", @"Mia");
    mention.range = NSMakeRange(NSNotFound, 0);
    EXPECT_TRUE(NSEqualRanges(mention.range, NSMakeRange(NSNotFound, 0)));
    EXPECT_EQ(held<KeloAPI::KLEntity>(mention).range.length, 0);
}

TEST(ModelRulesTest, WhatBelongsToAnObjectLivesOnWithIt) {
    KLVenue *venue = wholeVenue();
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    venue.category = wholeCategory();
    [pool drain];
    EXPECT_TRUE(same(venue.category.shortName, @"Coffee"));
}

TEST(ModelRulesTest, ObjectsOfAnotherClassAreRefused) {
    KLWatchPost *post = [[KLWatchPost new] autorelease];
    KLByline *line = byline();
    NSException *const exceptions[] = {
        raised([&] { post.user = (KLWatchUser *)[[KLRekelo new] autorelease]; }),
        raised([&] { line.entities = [NSArray arrayWithObject:@"ann"]; }),
        raised([] { userMosaic([NSArray array], YES); })};
    for (NSException *exception : exceptions) {
        EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
    }
    EXPECT_EQ(told(line, "entities"), "[]");
}

TEST(ModelRulesTest, EachIsWrappedAsItsOwnClass) {
    const auto url = *KeloAPI::URL::parse("https://a.example/");
    const auto list = std::make_shared<KeloAPI::KLPagedData>();
    const std::pair<id, Class> wrapped[] = {
        {parsed<KeloAPI::KLFeedInsert>("r", true), [KLFeedInsert class]},
        {parsed<KeloAPI::KLSolicitation>("r", true, "p"), [KLSolicitation class]},
        {parsed<KeloAPI::KLUserMosaic>(list, "", "", "", "r", true), [KLUserMosaic class]},
        {parsed<KeloAPI::KLUrlAction>("r", "t", "a", url, std::nullopt, std::nullopt, std::nullopt,
                                      "d", std::nullopt, std::nullopt),
         [KLUrlAction class]},
        {parsed<KeloAPI::KLByline>("by ann"), [KLByline class]},
        {parsed<KeloAPI::KLLongform>("x", url, 3), [KLLongform class]},
        {parsed<KeloAPI::KLEndlessLikesRange>(1, 2, 3, 4), [KLEndlessLikesRange class]},
        {parsed<KeloAPI::KLPostProcessStatus>(KeloAPI::KLPostProcessStatusState::Failed),
         [KLPostProcessStatus class]},
        {parsed<KeloAPI::KLVideoUpload>("m2"), [KLVideoUpload class]},
        {parsed<KeloAPI::KLVideoUploadProcessingInfo>(
             KeloAPI::KLVideoUploadProcessingState::Failed),
         [KLVideoUploadProcessingInfo class]},
    };
    for (const auto &[object, made] : wrapped) {
        EXPECT_TRUE([object isMemberOfClass:made]) << told(object);
    }
    EXPECT_EQ(told(wrapped[3].first, "details closeable"), R"("d" 0)");
    EXPECT_EQ(told(wrapped[9].first, "state"), "3");
}

TEST(ModelRulesTest, ChannelsAndEntitiesEqualByWhatNamesThem) {
    const auto channel = [](NSString *identifier, NSString *name) {
        return [[[KLChannel alloc] initWithChannelId:identifier
                                                name:name
                                        fontColorHex:nil
                                  backgroundColorHex:nil] autorelease];
    };
    id cats = channel(@"12", @"Cats");
    id mia = entity(@"9", @"mention", @"Mia");
    KLEntity *moved = entity(@"9", @"mention", @"Mia");
    moved.range = NSMakeRange(0, 1);
    const std::tuple<id, id, bool> pairs[] = {
        {cats, channel(@"12", @"Dogs"), true},
        {cats, channel(@"13", @"Cats"), false},
        {cats, @"12", false},
        {cats, nil, false},
        {mia, moved, true},
        {entity(nil, nil, @"x"), entity(nil, nil, @"x"), true},
        {mia, entity(nil, @"mention", @"Mia"), false},
        {mia, entity(@"9", @"tag", @"Mia"), false},
        {mia, entity(@"9", @"mention", @"Ben"), false},
        {mia, @"Mia", false},
        {mia, nil, false},
    };
    for (const auto &[one, other, equal] : pairs) {
        EXPECT_EQ([one isEqual:other] != NO, equal) << told(one) << told(other);
        EXPECT_TRUE(!equal || [one hash] == [other hash]);
    }
    NSSet *set = [NSSet setWithObjects:cats, channel(@"12", @"Dogs"), channel(@"13", @"Cats"), nil];
    EXPECT_EQ([set count], 2U);
}

TEST(ModelRulesTest, ListsOfBylinesAreTheLibrarys) {
    const auto ann =
        std::make_shared<KeloAPI::KLEntity>("7", "user", "ann", "", KeloAPI::Range{0, 3});
    const auto bob =
        std::make_shared<KeloAPI::KLEntity>("8", "user", "bob", "", KeloAPI::Range{0, 3});
    KLByline *line = byline();
    line.entities = [NSArray arrayWithObjects:toObjC(ann), toObjC(bob), nil];
    EXPECT_EQ(held<KeloAPI::KLByline>(line).entities, (std::vector{ann, bob}));
    EXPECT_EQ(told(line, "entities"), "[KLEntity KLEntity]");
    EXPECT_EQ([line.entities objectAtIndex:1], toObjC(bob));
    line.entities = nil;
    EXPECT_EQ(told(line, "entities"), "[]");
}

TEST(ModelRulesTest, MosaicsKeepTheVeryList) {
    KLPagedData *list = page();
    EXPECT_EQ(userMosaic(list, YES).users, list);
    id posts = [[[KLPostsMosaic alloc] initWithPosts:list
                                               title:nil
                                         description:nil
                                                link:nil
                                           reference:nil
                                           closeable:NO
                                                type:KLPostsMosaicTypeDefault
                                            pinnable:NO] autorelease];
    EXPECT_EQ([posts posts], list);
    EXPECT_EQ(told(posts, "title"), R"("")");
}

TEST(ModelRulesTest, NumbersOfEnumerationsAreTheLibrarys) {
    using Layout = KeloAPI::KLPostsMosaicType;
    using State = KeloAPI::KLVideoUploadProcessingState;
    using Status = KeloAPI::KLPostProcessStatusState;
    const auto layout = [](KLPostsMosaicType type) {
        return held<KeloAPI::KLPostsMosaic>(postsMosaic(NO, type, NO)).type;
    };
    EXPECT_EQ(layout(KLPostsMosaicTypeUnknown), Layout::Unknown);
    EXPECT_EQ(layout(KLPostsMosaicTypeAvatarIncluded), Layout::AvatarIncluded);
    EXPECT_EQ(layout(KLPostsMosaicTypeDefault), Layout::Default);
    EXPECT_EQ(layout(KLPostsMosaicTypeSmallThumbnails), Layout::SmallThumbnails);
    EXPECT_EQ(held<KeloAPI::KLPostProcessStatus>(status(1)).state, Status::Completed);
    EXPECT_EQ(held<KeloAPI::KLVideoUploadProcessingInfo>(info(2)).state, State::Succeeded);
    for (const NSInteger none : {NSInteger{-1}, NSInteger{4}, NSInteger{256}}) {
        NSException *const exceptions[] = {raised([&] { postsMosaic(NO, none, NO); }),
                                           raised([&] { info(none); }),
                                           raised([&] { status(none); })};
        for (NSException *exception : exceptions) {
            EXPECT_TRUE(same([exception name], NSInvalidArgumentException)) << none;
        }
    }
    EXPECT_TRUE(same([raised([] { status(3); }) name], NSInvalidArgumentException));
}

TEST(ModelRulesTest, StatesOfProcessingHaveTheirTexts) {
    const std::pair<NSInteger, NSString *> texts[] = {
        {KLVideoUploadProcessingStateInProgress, @"in_progress"},
        {KLVideoUploadProcessingStatePending, @"pending"},
        {KLVideoUploadProcessingStateSucceeded, @"succeeded"},
        {KLVideoUploadProcessingStateFailed, @"failed"}};
    for (const auto &[number, text] : texts) {
        const auto state = static_cast<KLVideoUploadProcessingState>(number);
        EXPECT_EQ(info(number).state, state);
        EXPECT_TRUE(same([KLVideoUploadProcessingInfo rawValueOfState:state], text));
        EXPECT_TRUE(same([KLVideoUploadProcessingInfo stateWithRawValue:text],
                         [NSNumber numberWithInteger:number]));
    }
    NSString *const others[] = {@"done", @"Failed", @"", nil};
    for (NSString *text : others) {
        EXPECT_EQ([KLVideoUploadProcessingInfo stateWithRawValue:text], nil);
    }
    for (const int number : {-1, 4}) {
        const auto none = static_cast<KLVideoUploadProcessingState>(number);
        EXPECT_EQ([KLVideoUploadProcessingInfo rawValueOfState:none], nil) << number;
    }
}
