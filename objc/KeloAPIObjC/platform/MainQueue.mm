#import <KeloAPIObjC/platform/MainQueue.h>

#include <KeloAPI/platform/MainQueue.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Pool.hpp>

#include <algorithm>
#include <chrono>

using namespace KeloBridge;
using Native = KeloAPI::MainQueue;

/// One task on its way to the run loop.
@interface KLMainQueueTask : KLBridged
- (void)run;
@end

@implementation KLMainQueueTask

+ (void)load {
    add<Boxed<Native::Task>>(self);
}

- (void)run {
    heldValue<Native::Task>(self)();
}

@end

/// On any thread.
static void handToRunLoop(Native::Task task) {
    const Pool pool;
    [wrapValue(std::move(task)) performSelectorOnMainThread:@selector(run)
                                                 withObject:nil
                                              waitUntilDone:NO];
}

@implementation MainQueue

+ (NSUInteger)drain {
    return Native::main().drain();
}

+ (void)run {
    Native::main().run();
}

+ (void)runUntilDate:(NSDate *)date {
    constexpr double longest = 1e9; // seconds
    const std::chrono::duration<double> left(
        std::clamp<double>([date timeIntervalSinceNow], 0, longest));
    Native::main().runUntil([] { return false; },
                            std::chrono::ceil<std::chrono::milliseconds>(left));
}

+ (void)stop {
    Native::main().stop();
}

+ (int)fileDescriptor {
    return Native::main().fileDescriptor();
}

+ (void)setRunsOnMainRunLoop:(BOOL)runs {
    if (runs) {
        Native::main().setExecutor(handToRunLoop);
    } else {
        Native::main().setExecutor({});
    }
}

@end
