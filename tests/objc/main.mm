#import <Foundation/Foundation.h>

#include <gtest/gtest.h>

namespace {

/// What a test leaves autoreleased goes with it.
class PoolOfEachTest : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override { _pool = [NSAutoreleasePool new]; }
    void OnTestEnd(const testing::TestInfo &) override {
        [_pool drain];
        _pool = nil;
    }

    NSAutoreleasePool *_pool = nil;
};

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new PoolOfEachTest);
    return RUN_ALL_TESTS();
}
