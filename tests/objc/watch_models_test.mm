// Posts and users of timelines, likes and reposts.
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

TEST(KLWatchPostTest, HasNothingAtFirst) {
    KLWatchPost *post = [[KLWatchPost new] autorelease];
    EXPECT_EQ(post.postId, nil);
    EXPECT_EQ(post.user, nil);
    EXPECT_EQ(post.caption, nil);
    EXPECT_EQ(post.created, nil);
    EXPECT_EQ(post.videoUrl, nil);
    EXPECT_EQ(post.thumbnailUrl, nil);
    EXPECT_EQ(post.liked, nil);
    EXPECT_EQ(post.currentUserRekelo, nil);
    EXPECT_FALSE(post.rekeloed);
}

TEST(KLWatchPostTest, KeepsWhatIsSet) {
    KLWatchPost *post = [[KLWatchPost new] autorelease];
    KLWatchUser *user = [[KLWatchUser new] autorelease];
    KLRekelo *rekelo = [[KLRekelo new] autorelease];
    post.postId = @"7";
    post.user = user;
    post.caption = @"caption";
    post.created = [NSDate dateWithTimeIntervalSince1970:1.5];
    post.videoUrl = @"https://media.example/a";
    post.thumbnailUrl = @"https://media.example/t";
    post.liked = [NSNumber numberWithBool:NO];
    post.currentUserRekelo = rekelo;
    EXPECT_TRUE(same(post.postId, @"7"));
    EXPECT_EQ(post.user, user);
    EXPECT_TRUE(same(post.caption, @"caption"));
    EXPECT_TRUE(same(post.created, [NSDate dateWithTimeIntervalSince1970:1.5]));
    EXPECT_TRUE(same(post.videoUrl, @"https://media.example/a"));
    EXPECT_TRUE(same(post.thumbnailUrl, @"https://media.example/t"));
    EXPECT_TRUE(same(post.liked, [NSNumber numberWithBool:NO]));
    EXPECT_EQ(post.currentUserRekelo, rekelo);
    EXPECT_TRUE(post.rekeloed);
    const auto native = shared<KeloAPI::KLWatchPost>(post);
    EXPECT_EQ(native->postId, "7");
    EXPECT_EQ(native->liked, false);
    post.liked = nil;
    post.created = nil;
    post.currentUserRekelo = nil;
    EXPECT_FALSE(native->liked);
    EXPECT_FALSE(native->created);
    EXPECT_FALSE(post.rekeloed);
    EXPECT_EQ(wrap(native), post);
    EXPECT_TRUE(same([raised([&] { post.user = (KLWatchUser *)rekelo; }) name],
                     NSInvalidArgumentException));
}

TEST(KLWatchUserTest, KeepsWhatIsSet) {
    KLWatchUser *user = [[KLWatchUser new] autorelease];
    EXPECT_EQ(user.username, nil);
    EXPECT_EQ(user.loopData, nil);
    user.username = @"mara";
    user.loopData = wrap(std::make_shared<KeloAPI::LoopData>(KeloAPI::Number::of(std::int64_t(3)),
                                                             KeloAPI::Number::of(1.0)));
    EXPECT_TRUE(same(user.username, @"mara"));
    EXPECT_EQ(shared(user.loopData), shared<KeloAPI::KLWatchUser>(user)->loopData);
    EXPECT_NE(user.loopData, nil);
    user.loopData = nil;
    EXPECT_EQ(user.loopData, nil);
}

TEST(KLLikeTest, KeepsWhatIsSet) {
    KLLike *like = [[KLLike new] autorelease];
    EXPECT_EQ(like.likeId, nil);
    EXPECT_EQ(like.user, nil);
    KLWatchUser *user = [[KLWatchUser new] autorelease];
    like.likeId = @"1";
    like.user = user;
    EXPECT_TRUE(same(like.likeId, @"1"));
    EXPECT_EQ(like.user, user);
}

TEST(KLRekeloTest, KeepsWhatIsSet) {
    KLRekelo *rekelo = [[KLRekelo new] autorelease];
    EXPECT_EQ(rekelo.rekeloId, nil);
    EXPECT_EQ(rekelo.user, nil);
    KLWatchUser *user = [[KLWatchUser new] autorelease];
    rekelo.rekeloId = @"1";
    rekelo.user = user;
    EXPECT_TRUE(same(rekelo.rekeloId, @"1"));
    EXPECT_EQ(rekelo.user, user);
}
