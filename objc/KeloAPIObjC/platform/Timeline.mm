#import <KeloAPIObjC/platform/Timeline.h>

#include <KeloAPI/http/Timeline.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

@implementation Timeline

KELO_STANDS_FOR_VALUE(Timeline, KeloAPI::Timeline)
KELO_READS(NSDate *, requestStartTime, initialResponseTime, requestCompletedTime,
           serializationCompletedTime)
KELO_READS(NSTimeInterval, latency, requestDuration, serializationDuration, totalDuration)

- (instancetype)init {
    return adoptMade(
        self, [] { return std::make_shared<Boxed<KeloAPI::Timeline>>(KeloAPI::Timeline()); });
}

@end
