#import <KeloAPIObjC/bridge/KLBridged.h>

/// How far the service is with a post's video.
typedef NS_ENUM(NSInteger, KLPostProcessStatusState) {
    KLPostProcessStatusStateStarted = 0,
    KLPostProcessStatusStateCompleted = 1,
    KLPostProcessStatusStateFailed = 2
};

/// What the service says of its work on a post. Does not change once made.
@interface KLPostProcessStatus : KLBridged

/// What is no state raises `NSInvalidArgumentException`.
- (instancetype)initWithState:(KLPostProcessStatusState)state;
/// Stops the process.
- (instancetype)init;

/// "state", as "started", "completed" or "failed".
@property(nonatomic, readonly) KLPostProcessStatusState state;

@end
