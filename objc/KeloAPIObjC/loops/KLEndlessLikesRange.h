#import <KeloAPIObjC/bridge/KLBridged.h>

/// How many likes a span of a long-form video was given, at one level. Does not change once made.
@interface KLEndlessLikesRange : KLBridged

- (instancetype)initWithCount:(double)count start:(double)start end:(double)end level:(double)level;
/// Stops the process.
- (instancetype)init;

/// "count".
@property(nonatomic, readonly) double count;
/// "startTime" and "endTime": in seconds of the video.
@property(nonatomic, readonly) double startTime;
@property(nonatomic, readonly) double endTime;
/// "level": as the service means it.
@property(nonatomic, readonly) double level;

@end
