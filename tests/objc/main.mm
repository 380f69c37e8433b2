#import <Foundation/Foundation.h>

#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <gtest/gtest.h>

extern "C" void KeloMakeWhatStays();

namespace {

/// What a test leaves autoreleased goes with it. Then nothing may be alive that it made: a leak
/// checker does not see what the library still knows of.
class PoolOfEachTest : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override {
        _alive = KeloBridge::aliveCount();
        _pool = [NSAutoreleasePool new];
    }
    void OnTestEnd(const testing::TestInfo &) override {
        [_pool drain];
        _pool = nil;
        EXPECT_LE(KeloBridge::aliveCount(), _alive) << "the test leaves bridged objects";
    }

    std::size_t _alive = 0;
    NSAutoreleasePool *_pool = nil;
};

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    KeloMakeWhatStays();
    testing::UnitTest::GetInstance()->listeners().Append(new PoolOfEachTest);
    return RUN_ALL_TESTS();
}
