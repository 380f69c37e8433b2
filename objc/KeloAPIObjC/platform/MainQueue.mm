#import <KeloAPIObjC/platform/MainQueue.h>

#include <KeloAPI/queues/MainQueue.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

#include <algorithm>
#include <chrono>
#include <cstdint>

using Native = KeloAPI::MainQueue;

/// Drains the queue when its descriptor becomes readable.
@interface KLMainQueueWatcher : NSObject <RunLoopEvents>
+ (KLMainQueueWatcher *)shared;
@end

@implementation KLMainQueueWatcher

+ (KLMainQueueWatcher *)shared {
    static KLMainQueueWatcher *const shared = [KLMainQueueWatcher new];
    return shared;
}

- (void)receivedEvent:(void *)data
                 type:(RunLoopEventType)type
                extra:(void *)extra
              forMode:(NSString *)mode {
    Native::main().drain();
}

@end

/// What the run loop knows the descriptor as.
static void *descriptor() {
    return reinterpret_cast<void *>(static_cast<std::intptr_t>(Native::main().fileDescriptor()));
}

@implementation MainQueue

+ (NSUInteger)drain {
    return Native::main().drain();
}

+ (void)run {
    Native::main().run();
}

+ (void)runUntilDate:(NSDate *)date {
    KeloBridge::requireArgument(date, @"date");
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

+ (void)addToRunLoop:(NSRunLoop *)runLoop forMode:(NSString *)mode {
    KeloBridge::requireArgument(runLoop, @"runLoop");
    [runLoop addEvent:descriptor() type:ET_RDESC watcher:[KLMainQueueWatcher shared] forMode:mode];
}

+ (void)removeFromRunLoop:(NSRunLoop *)runLoop forMode:(NSString *)mode {
    KeloBridge::requireArgument(runLoop, @"runLoop");
    [runLoop removeEvent:descriptor() type:ET_RDESC forMode:mode all:NO];
}

@end
