#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <thread>
#include <vector>

using namespace KeloBridge;
using namespace KeloObjcTest;

TEST(IdentityTest, OneObjectWhileItIsAlive) {
    const auto empty = std::make_shared<KeloAPI::KLEmpty>();
    id first = wrap(empty);
    EXPECT_TRUE([first isMemberOfClass:[KLEmpty class]]);
    EXPECT_EQ(wrap(empty), first);
    EXPECT_EQ(shared(first), empty);
}

TEST(IdentityTest, LetsTheObjectGo) {
    std::weak_ptr<KeloAPI::KLEmpty> seen;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    {
        const auto empty = std::make_shared<KeloAPI::KLEmpty>();
        seen = empty;
        wrap(empty);
    }
    EXPECT_FALSE(seen.expired());
    [pool drain];
    EXPECT_TRUE(seen.expired());
}

TEST(IdentityTest, OneMadeHereIsFoundAgain) {
    KLEmpty *empty = [[KLEmpty new] autorelease];
    EXPECT_EQ(wrap(shared(empty)), empty);
}

TEST(IdentityTest, OtherObjectsCross) {
    NSObject *other = [[NSObject new] autorelease];
    const auto crossed = shared(other);
    EXPECT_EQ(shared(other), crossed);
    EXPECT_EQ(wrap(crossed), other);
    EXPECT_EQ(wrap(nullptr), nil);
    EXPECT_EQ(shared(nil), nullptr);
}

TEST(IdentityTest, AnotherClassHasNoPlace) {
    NSException *exception = raised([] { shared<KeloAPI::KLEmpty>([[NSObject new] autorelease]); });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(IdentityTest, HoldsAcrossThreads) {
    const auto empty = std::make_shared<KeloAPI::KLEmpty>();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            GSRegisterCurrentThread();
            for (int round = 0; round < 2000; ++round) {
                NSAutoreleasePool *pool = [NSAutoreleasePool new];
                id one = wrap(empty);
                EXPECT_EQ(wrap(empty), one);
                [pool drain];
            }
            GSUnregisterCurrentThread();
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(empty.use_count(), 1);
}
