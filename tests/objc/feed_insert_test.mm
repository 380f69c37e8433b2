#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;
using PagedData = KeloAPI::KLPagedData;

namespace {

KLPostsMosaic *postsMosaic(id posts, KLPostsMosaicType type) {
    return [[[KLPostsMosaic alloc] initWithPosts:posts
                                           title:@"Dogs"
                                     description:@"of today"
                                            link:@"kelo://dogs"
                                       reference:@"r1"
                                       closeable:YES
                                            type:type
                                        pinnable:YES] autorelease];
}

KLUserMosaic *userMosaic(id users, BOOL closeable) {
    return [[[KLUserMosaic alloc] initWithUsers:users
                                          title:@"People"
                                    description:@"near you"
                                           link:@"kelo://near"
                                      reference:@"r2"
                                      closeable:closeable] autorelease];
}

KLUrlAction *urlAction(NSURL *actionUrl, NSNumber *closeable, NSURL *others, NSString *texts) {
    return [[[KLUrlAction alloc] initWithReference:@"r3"
                                             title:@"Vote"
                                       actionTitle:@"Go"
                                         actionUrl:actionUrl
                                         closeable:closeable
                                   backgroundImage:others
                                   backgroundVideo:[others URLByAppendingPathComponent:@"video"]
                                           details:texts
                                        actionIcon:[others URLByAppendingPathComponent:@"icon"]
                                      closeUrlPath:[texts stringByAppendingString:@"/close"]]
        autorelease];
}

NSNumber *yes() {
    return [NSNumber numberWithBool:YES];
}

} // namespace

TEST(KLFeedInsertTest, KeepsReferenceAndCloseable) {
    KLFeedInsert *insert = [[[KLFeedInsert alloc] initWithReference:@"r"
                                                          closeable:YES] autorelease];
    EXPECT_TRUE(same(insert.reference, @"r"));
    EXPECT_TRUE(insert.closeable);
    KLFeedInsert *fixed = [[[KLFeedInsert alloc] initWithReference:@"r" closeable:NO] autorelease];
    EXPECT_FALSE(fixed.closeable);
}

TEST(KLFeedInsertTest, EachIsWrappedAsItsOwnClass) {
    id insert = wrap(std::make_shared<KeloAPI::KLFeedInsert>("r", true));
    EXPECT_TRUE([insert isMemberOfClass:[::KLFeedInsert class]]);
    id solicitation = wrap(std::make_shared<KeloAPI::KLSolicitation>("r", true, "p"));
    EXPECT_TRUE([solicitation isMemberOfClass:[::KLSolicitation class]]);
    id users = wrap(std::make_shared<KeloAPI::KLUserMosaic>(std::make_shared<PagedData>(), "", "",
                                                            "", "r", true));
    EXPECT_TRUE([users isMemberOfClass:[::KLUserMosaic class]]);
    EXPECT_TRUE(same([users reference], @"r"));
}

TEST(KLPostsMosaicTest, KeepsWhatItIsMadeOf) {
    const auto posts = std::make_shared<PagedData>();
    KLPostsMosaic *mosaic = postsMosaic(wrap(posts), KLPostsMosaicTypeSmallThumbnails);
    EXPECT_EQ(shared(mosaic.posts), posts);
    EXPECT_EQ(mosaic.posts, wrap(posts));
    EXPECT_TRUE(same(mosaic.title, @"Dogs"));
    EXPECT_TRUE(same(mosaic.subtitle, @"of today"));
    EXPECT_TRUE(same(mosaic.link, @"kelo://dogs"));
    EXPECT_TRUE(same(mosaic.reference, @"r1"));
    EXPECT_TRUE(mosaic.closeable);
    EXPECT_EQ(mosaic.type, KLPostsMosaicTypeSmallThumbnails);
    EXPECT_TRUE(mosaic.pinnable);
}

TEST(KLPostsMosaicTest, FlagsAreNotMixedUp) {
    for (int flags = 0; flags < 4; ++flags) {
        KLPostsMosaic *mosaic = [[[KLPostsMosaic alloc]
            initWithPosts:static_cast<KLPagedData *>(wrap(std::make_shared<PagedData>()))
                    title:nil
              description:nil
                     link:nil
                reference:nil
                closeable:(flags & 1) != 0
                     type:KLPostsMosaicTypeUnknown
                 pinnable:(flags & 2) != 0] autorelease];
        EXPECT_EQ(mosaic.closeable, (flags & 1) != 0);
        EXPECT_EQ(mosaic.pinnable, (flags & 2) != 0);
        EXPECT_TRUE(same(mosaic.title, @""));
    }
}

TEST(KLPostsMosaicTest, TypesAreThoseOfTheLibrary) {
    using Type = KeloAPI::KLPostsMosaicType;
    const std::pair<KLPostsMosaicType, Type> types[] = {
        {KLPostsMosaicTypeUnknown, Type::Unknown},
        {KLPostsMosaicTypeAvatarIncluded, Type::AvatarIncluded},
        {KLPostsMosaicTypeDefault, Type::Default},
        {KLPostsMosaicTypeSmallThumbnails, Type::SmallThumbnails}};
    id posts = wrap(std::make_shared<PagedData>());
    for (const auto &[here, there] : types) {
        KLPostsMosaic *mosaic = postsMosaic(posts, here);
        EXPECT_EQ(mosaic.type, here);
        EXPECT_EQ(held<KeloAPI::KLPostsMosaic>(mosaic).type(), there);
    }
    for (const int none : {-1, 4}) {
        NSException *exception =
            raised([&] { postsMosaic(posts, static_cast<KLPostsMosaicType>(none)); });
        EXPECT_TRUE(same([exception name], NSInvalidArgumentException)) << none;
    }
}

TEST(KLUserMosaicTest, KeepsWhatItIsMadeOf) {
    const auto users = std::make_shared<PagedData>();
    KLUserMosaic *mosaic = userMosaic(wrap(users), YES);
    EXPECT_EQ(mosaic.users, wrap(users));
    EXPECT_TRUE(same(mosaic.title, @"People"));
    EXPECT_TRUE(same(mosaic.subtitle, @"near you"));
    EXPECT_TRUE(same(mosaic.link, @"kelo://near"));
    EXPECT_TRUE(same(mosaic.reference, @"r2"));
    EXPECT_TRUE(mosaic.closeable);
    EXPECT_FALSE(userMosaic(wrap(users), NO).closeable);
}

TEST(KLUserMosaicTest, TakesAListAlone) {
    NSException *exception = raised([] { userMosaic([NSArray array], YES); });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(KLUrlActionTest, KeepsWhatItIsMadeOf) {
    NSURL *url = [NSURL URLWithString:@"https://a.example/vote?x=1"];
    NSURL *image = [NSURL URLWithString:@"https://a.example/image"];
    KLUrlAction *action = urlAction(url, yes(), image, @"now");
    EXPECT_TRUE(same(action.reference, @"r3"));
    EXPECT_TRUE(same(action.title, @"Vote"));
    EXPECT_TRUE(same(action.actionTitle, @"Go"));
    EXPECT_TRUE(same(action.actionUrl, url));
    EXPECT_TRUE(action.closeable);
    EXPECT_TRUE(same(action.backgroundImage, image));
    EXPECT_TRUE(same([action.backgroundVideo absoluteString], @"https://a.example/image/video"));
    EXPECT_TRUE(same(action.details, @"now"));
    EXPECT_TRUE(same([action.actionIcon absoluteString], @"https://a.example/image/icon"));
    EXPECT_TRUE(same(action.closeUrlPath, @"now/close"));
}

TEST(KLUrlActionTest, MostMayBeMissing) {
    NSURL *url = [NSURL URLWithString:@"https://a.example/"];
    KLUrlAction *action = urlAction(url, nil, nil, nil);
    EXPECT_FALSE(action.closeable);
    EXPECT_EQ(action.backgroundImage, nil);
    EXPECT_EQ(action.backgroundVideo, nil);
    EXPECT_EQ(action.details, nil);
    EXPECT_EQ(action.actionIcon, nil);
    EXPECT_EQ(action.closeUrlPath, nil);
    EXPECT_FALSE(urlAction(url, [NSNumber numberWithBool:NO], nil, nil).closeable);
}

TEST(KLUrlActionTest, NeedsAURL) {
    NSException *exception = raised([] { urlAction(nil, yes(), nil, nil); });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(KLUrlActionTest, StandsForWhatIsParsed) {
    const auto parsed = std::make_shared<KeloAPI::KLUrlAction>(
        "r", "t", "a", *KeloAPI::URL::parse("https://a.example/"), std::nullopt, std::nullopt,
        std::nullopt, "d", std::nullopt, std::nullopt);
    KLUrlAction *action = wrap(parsed);
    ASSERT_TRUE([action isMemberOfClass:[KLUrlAction class]]);
    EXPECT_TRUE(same(action.details, @"d"));
    EXPECT_FALSE(action.closeable);
}

TEST(KLSolicitationTest, KeepsWhatItIsMadeOf) {
    KLSolicitation *whole = [[[KLSolicitation alloc] initWithReference:@"r4"
                                                             closeable:yes()
                                                          closeUrlPath:@"close/4"] autorelease];
    EXPECT_TRUE(same(whole.reference, @"r4"));
    EXPECT_TRUE(whole.closeable);
    EXPECT_TRUE(same(whole.closeUrlPath, @"close/4"));
    KLSolicitation *bare = [[[KLSolicitation alloc] initWithReference:@"r5"
                                                            closeable:nil
                                                         closeUrlPath:nil] autorelease];
    EXPECT_FALSE(bare.closeable);
    EXPECT_EQ(bare.closeUrlPath, nil);
}

TEST(KLFeedInsertDeathTest, InitialisersThatAreNotOffered) {
    EXPECT_DEATH([[KLFeedInsert alloc] init], "init\\(\\) of class KeloAPI.KLFeedInsert\n");
    EXPECT_DEATH([[KLPostsMosaic alloc] init], "init\\(\\) of class KeloAPI.KLPostsMosaic\n");
    EXPECT_DEATH([[KLUserMosaic alloc] init], "init\\(\\) of class KeloAPI.KLUserMosaic\n");
    EXPECT_DEATH([[KLUrlAction alloc] init], "init\\(\\) of class KeloAPI.KLUrlAction\n");
    EXPECT_DEATH([[KLSolicitation alloc] init], "init\\(\\) of class KeloAPI.KLSolicitation\n");
}

TEST(KLFeedInsertDeathTest, TheBaseClassesInitialiserIsNotInherited) {
    EXPECT_DEATH([[KLPostsMosaic alloc] initWithReference:@"r" closeable:YES],
                 "init\\(reference:closeable:\\) of class KeloAPI.KLPostsMosaic\n");
    EXPECT_DEATH([[KLUserMosaic alloc] initWithReference:@"r" closeable:YES],
                 "init\\(reference:closeable:\\) of class KeloAPI.KLUserMosaic\n");
    EXPECT_DEATH([[KLUrlAction alloc] initWithReference:@"r" closeable:YES],
                 "init\\(reference:closeable:\\) of class KeloAPI.KLUrlAction\n");
    EXPECT_DEATH([[KLSolicitation alloc] initWithReference:@"r" closeable:YES],
                 "init\\(reference:closeable:\\) of class KeloAPI.KLSolicitation\n");
}
