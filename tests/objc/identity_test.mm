#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

TEST(IdentityTest, OneObjectWhileItIsAlive) {
    const auto empty = std::make_shared<KeloAPI::KLEmpty>();
    id first = toObjC(empty);
    EXPECT_TRUE([first isMemberOfClass:[KLEmpty class]]);
    EXPECT_EQ(toObjC(empty), first);
    EXPECT_EQ(toNative(first), empty);
}

TEST(IdentityTest, LetsTheObjectGo) {
    std::weak_ptr<KeloAPI::KLEmpty> seen;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    {
        const auto empty = std::make_shared<KeloAPI::KLEmpty>();
        seen = empty;
        toObjC(empty);
    }
    EXPECT_FALSE(seen.expired());
    [pool drain];
    EXPECT_TRUE(seen.expired());
}

TEST(IdentityTest, OneMadeHereIsFoundAgain) {
    KLEmpty *empty = [[KLEmpty new] autorelease];
    EXPECT_EQ(toObjC(toNative(empty)), empty);
}

TEST(IdentityTest, OtherObjectsCross) {
    NSObject *other = [[NSObject new] autorelease];
    const auto crossed = toNative(other);
    EXPECT_EQ(toNative(other), crossed);
    EXPECT_EQ(toObjC(crossed), other);
    EXPECT_EQ(toObjC(nullptr), nil);
    EXPECT_EQ(toNative(nil), nullptr);
}

TEST(IdentityTest, AnotherClassHasNoPlace) {
    NSException *exception =
        raised([] { toNative<KeloAPI::KLEmpty>([[NSObject new] autorelease]); });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(IdentityTest, StaysAsLongAsTheLibraryHoldsIt) {
    const auto empty = std::make_shared<KeloAPI::KLEmpty>();
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    id first = toObjC(empty);
    [pool drain];
    EXPECT_EQ([first retainCount], 1U);
    EXPECT_EQ(toObjC(empty), first);
    EXPECT_EQ(toNative(first), empty);
}

TEST(IdentityTest, AnObjectIsReleasedOnceForEachReference) {
    const auto empty = std::make_shared<KeloAPI::KLEmpty>();
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    id object = toObjC(empty);
    [pool drain];
    EXPECT_DEATH([object release], "an object is released once for each reference");
}

TEST(IdentityTest, AnObjectBeforeItsInitialiserIsNone) {
    KLEmpty *empty = [KLEmpty alloc];
    EXPECT_EQ(toNative(empty), nullptr);
    [empty release];
}
