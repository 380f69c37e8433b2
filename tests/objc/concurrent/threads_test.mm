// Objects of both languages on several threads at a time: what ThreadSanitizer looks at.
#include "objc/HostDelegate.h"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

using namespace KeloBridge;
using namespace KeloObjcTest;

static std::atomic<int> postsGone{0};

/// Uses its own property to the end.
@interface ThreadPost : KLWatchPost
@end

@implementation ThreadPost
- (void)dealloc {
    postsGone += [self.postId isEqual:@"7"] ? 1 : 1000;
    [super dealloc];
}
@end

/// Notes nothing: several threads ask it at a time.
@interface QuietDelegate : HostDelegate
@end

@implementation QuietDelegate
- (NSString *)hostForSession:(Session *)session {
    return @"service.example";
}
@end

namespace {

constexpr std::size_t threadCount = 4;
/// How many objects the threads go over at a time, and how often.
constexpr std::size_t objectCount = 100;
constexpr int roundCount = 10;

/// Calls on all threads at the same time; each has a pool.
void onThreads(const std::function<void(std::size_t thread)> &work) {
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            GSRegisterCurrentThread();
            NSAutoreleasePool *pool = [NSAutoreleasePool new];
            work(thread);
            [pool drain];
            GSUnregisterCurrentThread();
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

/// The same for each object, in the same order on all threads, with a pool for each.
void onThreadsForEach(const std::function<void(std::size_t thread, std::size_t object)> &work) {
    onThreads([&](std::size_t thread) {
        for (std::size_t object = 0; object < objectCount; ++object) {
            NSAutoreleasePool *pool = [NSAutoreleasePool new];
            work(thread, object);
            [pool drain];
        }
    });
}

/// The shared pointers of each thread.
using Natives = std::vector<std::vector<std::shared_ptr<Object>>>;

} // namespace

TEST(ThreadsTest, AllFindOneObject) {
    for (int round = 0; round < roundCount; ++round) {
        std::vector<std::shared_ptr<Object>> made(objectCount);
        std::generate(made.begin(), made.end(),
                      [] { return std::make_shared<KeloAPI::KLEmpty>(); });
        const std::vector<std::weak_ptr<Object>> seen(made.begin(), made.end());
        Natives natives(threadCount, std::exchange(made, {}));
        std::vector<std::vector<id>> found(threadCount, std::vector<id>(objectCount));
        onThreadsForEach([&](std::size_t thread, std::size_t object) {
            id one = toObjC(natives[thread][object]);
            EXPECT_EQ(toNative(one), natives[thread][object]);
            natives[thread][object] = nullptr;
            found[thread][object] = [one retain];
        });
        for (std::size_t object = 0; object < objectCount; ++object) {
            for (std::size_t thread = 0; thread < threadCount; ++thread) {
                EXPECT_EQ(found[thread][object], found[0][object]);
                [found[thread][object] release];
            }
            EXPECT_TRUE(seen[object].expired());
        }
    }
}

TEST(ThreadsTest, AnObjectRestsAndWakes) {
    const auto native = std::make_shared<KeloAPI::KLEmpty>();
    id object = toObjC(native);
    for (int round = 0; round < roundCount; ++round) {
        onThreadsForEach([&](std::size_t, std::size_t) {
            EXPECT_EQ(toObjC(native), object);
            [object retain];
            [object release];
        });
    }
    EXPECT_EQ(toNative(object), native);
}

/// Whichever side lets go last, on whichever thread.
TEST(ThreadsTest, AHostsObjectEndsOnce) {
    postsGone = 0;
    for (int round = 0; round < roundCount; ++round) {
        std::vector<id> posts(objectCount);
        Natives natives(threadCount);
        for (id &object : posts) {
            ThreadPost *post = [ThreadPost new];
            post.postId = @"7";
            object = post;
            for (auto &ofThread : natives) {
                ofThread.push_back(toNative(post));
            }
        }
        onThreadsForEach([&](std::size_t thread, std::size_t object) {
            if (thread == 0) {
                [posts[object] release];
            } else {
                EXPECT_EQ(toObjC(natives[thread][object]), posts[object]);
            }
            natives[thread][object] = nullptr;
        });
    }
    EXPECT_EQ(postsGone, roundCount * static_cast<int>(objectCount));
}

TEST(ThreadsTest, ObjectsAreArchived) {
    KLVenueCategory *category = [[[KLVenueCategory alloc] initWithCategoryId:@"4"
                                                                   shortName:@"Cafe"] autorelease];
    KLEntity *entity = [[[KLEntity alloc] initWithIdString:@"1"
                                                      type:@"user"
                                                     title:@"t"
                                                      link:@"l"
                                                     range:NSMakeRange(0, 1)] autorelease];
    onThreadsForEach([&](std::size_t thread, std::size_t) {
        id object = thread % 2 == 0 ? static_cast<id>(category) : entity;
        NSData *archive = [NSKeyedArchiver archivedDataWithRootObject:object];
        id read = [NSKeyedUnarchiver unarchiveObjectWithData:archive];
        EXPECT_TRUE([read isMemberOfClass:[object class]]);
        EXPECT_NE(read, object);
    });
}

TEST(ThreadsTest, AHostsOwnObjectsCross) {
    NSObject *other = [[NSObject new] autorelease];
    onThreadsForEach([&](std::size_t, std::size_t) {
        const auto crossed = toNative(other);
        EXPECT_EQ(toNative(other), crossed);
        EXPECT_EQ(toObjC(crossed), other);
    });
    EXPECT_EQ([other retainCount], 1U);
}

TEST(ThreadsTest, ADelegateIsAskedWhileItGoes) {
    Session *session =
        [[[Session alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    for (int round = 0; round < roundCount; ++round) {
        onThreadsForEach([&](std::size_t thread, std::size_t) {
            if (thread == 0) {
                QuietDelegate *own = [QuietDelegate new];
                session.delegate = own;
                [own release];
            } else {
                EXPECT_GT([session.host length], 0U);
            }
        });
    }
    EXPECT_EQ(session.delegate, nil);
}
