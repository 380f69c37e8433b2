#include "objc/ObjcTest.hpp"

#include <KeloAPIObjC/bridge/Pool.hpp>

#include <stdexcept>
#include <string>

using namespace KeloBridge;
using namespace KeloObjcTest;

static int tracesGone = 0;

@interface Trace : NSObject
@end

@implementation Trace
- (void)dealloc {
    ++tracesGone;
    [super dealloc];
}
@end

namespace {

class PoolTest : public testing::Test {
protected:
    void SetUp() override { tracesGone = 0; }
};

} // namespace

TEST_F(PoolTest, GivesBackWhatTheCallGives) {
    EXPECT_EQ(inPool([] { return std::string("given"); }), "given");
    inPool([] { [[Trace new] autorelease]; });
    EXPECT_EQ(tracesGone, 1);
}

TEST_F(PoolTest, WhatIsRaisedOutlivesThePool) {
    NSException *exception = raised([] {
        inPool([] {
            [[Trace new] autorelease];
            [NSException raise:NSRangeException format:@"out of %@", @"names"];
        });
    });
    EXPECT_TRUE(same([exception reason], @"out of names"));
    EXPECT_EQ(tracesGone, 1);
}

TEST_F(PoolTest, ExceptionsOfTheOtherLanguagePass) {
    const auto call = [] {
        [[Trace new] autorelease];
        throw std::runtime_error("odd");
    };
    try {
        inPool(call);
        FAIL();
    } catch (const std::runtime_error &thrown) {
        EXPECT_STREQ(thrown.what(), "odd");
    }
    EXPECT_EQ(tracesGone, 1);
}
