#import <KeloAPIObjC/bridge/KLBridged.h>

/// When the stages of a request happened. An instant that was not reached equals the one after it.
/// Durations are in seconds.
@interface Timeline : KLBridged

/// The request was sent.
@property(nonatomic, readonly) NSDate *requestStartTime;
/// The first byte of the answer came.
@property(nonatomic, readonly) NSDate *initialResponseTime;
/// The exchange ended.
@property(nonatomic, readonly) NSDate *requestCompletedTime;
/// The answer was serialised.
@property(nonatomic, readonly) NSDate *serializationCompletedTime;

/// From the sending to the first byte of the answer.
@property(nonatomic, readonly) NSTimeInterval latency;
/// From the sending to the end of the exchange.
@property(nonatomic, readonly) NSTimeInterval requestDuration;
/// From the end of the exchange to the serialised answer.
@property(nonatomic, readonly) NSTimeInterval serializationDuration;
/// From the sending to the serialised answer.
@property(nonatomic, readonly) NSTimeInterval totalDuration;

@end
