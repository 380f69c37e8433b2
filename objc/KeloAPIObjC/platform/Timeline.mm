#import <KeloAPIObjC/platform/Timeline.h>

#include <KeloAPI/http/Timeline.hpp>
#include <KeloAPIObjC/bridge/Boxed.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Timeline;

static NSTimeInterval seconds(std::chrono::microseconds duration) {
    return std::chrono::duration<double>(duration).count();
}

@implementation Timeline

+ (void)load {
    add<Boxed<Native>>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Boxed<Native>>(Native()));
}

- (NSDate *)requestStartTime {
    return date(heldValue<Native>(self).requestStartTime);
}

- (NSDate *)initialResponseTime {
    return date(heldValue<Native>(self).initialResponseTime);
}

- (NSDate *)requestCompletedTime {
    return date(heldValue<Native>(self).requestCompletedTime);
}

- (NSDate *)serializationCompletedTime {
    return date(heldValue<Native>(self).serializationCompletedTime);
}

- (NSTimeInterval)latency {
    return seconds(heldValue<Native>(self).latency());
}

- (NSTimeInterval)requestDuration {
    return seconds(heldValue<Native>(self).requestDuration());
}

- (NSTimeInterval)serializationDuration {
    return seconds(heldValue<Native>(self).serializationDuration());
}

- (NSTimeInterval)totalDuration {
    return seconds(heldValue<Native>(self).totalDuration());
}

@end
