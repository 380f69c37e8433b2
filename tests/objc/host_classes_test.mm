#include "objc/HostCode.h"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <thread>

using namespace KeloBridge;
using namespace KeloObjcTest;

static int notedGone = 0;

/// A post with something of the host's.
@interface NotedPost : KLWatchPost {
@public
    int note;
}
@end

@implementation NotedPost
- (void)dealloc {
    notedGone++;
    [super dealloc];
}
@end

@interface NotedPostParser : AnyObjectJsonParser
@end

@implementation NotedPostParser
- (id)parse:(NSDictionary *)json error:(NSError **)error {
    NotedPost *post = [[NotedPost new] autorelease];
    post.postId = [json objectForKey:@"postId"];
    post->note = 5;
    return post;
}
@end

@interface NotedList : KLPagedData
@end

@implementation NotedList
@end

static int lateGone = 0;

@interface Late : NSObject
@end

@implementation Late
- (void)dealloc {
    lateGone++;
    [super dealloc];
}
@end

/// Leaves something in the autorelease pool when it goes.
@interface Leaving : NSObject
@end

@implementation Leaving
- (void)dealloc {
    [[Late new] autorelease];
    [super dealloc];
}
@end

namespace {

class HostClassesTest : public testing::Test {
protected:
    void SetUp() override { notedGone = 0; }
};

int noteOf(id post) {
    return [post isMemberOfClass:[NotedPost class]] ? static_cast<NotedPost *>(post)->note : 0;
}

} // namespace

TEST_F(HostClassesTest, AHostsModelOutOfAParserIsKept) {
    std::shared_ptr<KeloAPI::Object> made;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    const auto parser =
        toNative<KeloAPI::AnyObjectJsonParser>([[[NotedPostParser alloc] init] autorelease]);
    const auto read = KeloAPI::JsonDocument::parse(R"({"postId": "7"})");
    made = parser->parse(*read.value().root().object());
    [pool drain];
    EXPECT_EQ(std::dynamic_pointer_cast<KeloAPI::KLWatchPost>(made)->postId, "7");
    EXPECT_EQ(noteOf(toObjC(made)), 5);
    EXPECT_EQ(notedGone, 0);
}

TEST_F(HostClassesTest, AListKeepsAHostsModelAndLetsItGo) {
    KLPagedData *list = [KLPagedData new];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NotedPost *post = [NotedPost new];
    post->note = 8;
    [list append:post];
    [post release];
    [pool drain];
    pool = [NSAutoreleasePool new];
    EXPECT_EQ(notedGone, 0);
    EXPECT_EQ(noteOf([list objectAtIndex:0]), 8);
    EXPECT_TRUE([list remove:[list objectAtIndex:0]]);
    [pool drain];
    EXPECT_EQ(notedGone, 1);
    [list release];
}

TEST_F(HostClassesTest, APropertyKeepsAHostsModel) {
    KLPostsMosaic *mosaic = nil;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NotedList *list = [[NotedList new] autorelease];
    mosaic = [[KLPostsMosaic alloc] initWithPosts:list
                                            title:@"t"
                                      description:@"d"
                                             link:@"l"
                                        reference:@"r"
                                        closeable:NO
                                             type:KLPostsMosaicTypeDefault
                                         pinnable:NO];
    [pool drain];
    EXPECT_TRUE([mosaic.posts isMemberOfClass:[NotedList class]]);
    [mosaic release];
}

TEST_F(HostClassesTest, AnActionDoesNotKeepAHostsPost) {
    NotedPost *post = [NotedPost new];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    LikeActionEndpoint *like = [[LikeActionEndpoint alloc] initWithPost:post];
    RekeloActionEndpoint *rekelo = [[RekeloActionEndpoint alloc] initWithPost:post];
    PostActionEndpoint *action =
        [[PostActionEndpoint alloc] initWithPost:post
                                          parser:[[[NotedPostParser alloc] init] autorelease]];
    EXPECT_EQ(like.post, post);
    EXPECT_EQ(rekelo.post, post);
    EXPECT_EQ(action.post, post);
    [pool drain];
    [post release];
    EXPECT_EQ(notedGone, 1);
    EXPECT_EQ(like.post, nil);
    EXPECT_EQ(rekelo.post, nil);
    EXPECT_EQ(action.post, nil);
    [like release];
    [rekelo release];
    [action release];
}

TEST_F(HostClassesTest, ACopyIsOfTheHostsClass) {
    NotedList *list = [[[NotedList alloc] initWithData:[NSArray arrayWithObject:@"x"]] autorelease];
    NotedList *copied = [[list copy] autorelease];
    EXPECT_TRUE([copied isMemberOfClass:[NotedList class]]);
    EXPECT_TRUE(same(copied.data, list.data));
    [copied removeAtIndex:0];
    EXPECT_EQ(list.count, 1);
    EXPECT_EQ(toObjC(toNative(copied)), copied);
}

TEST_F(HostClassesTest, ADerivedClassIsFoundWithoutBeingKept) {
    NotedPost *post = [NotedPost new];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    EXPECT_EQ(toNative(post), toNative(post));
    EXPECT_EQ(toObjC(toNative(post)), post);
    [pool drain];
    EXPECT_EQ([post retainCount], 1U);
    [post release];
    EXPECT_EQ(notedGone, 1);
}

/// The library lets go on threads that have no pool.
TEST_F(HostClassesTest, WhatGoesOnAnotherThreadLeavesNothing) {
    lateGone = 0;
    Leaving *leaving = [Leaving new];
    auto crossed = toNative(leaving);
    [leaving release];
    int gone = 0;
    std::thread([&] {
        crossed.reset();
        gone = lateGone;
    }).join();
    EXPECT_EQ(gone, 1);
}
