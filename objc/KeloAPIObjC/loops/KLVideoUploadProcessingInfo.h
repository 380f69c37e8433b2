#import <KeloAPIObjC/bridge/KLBridged.h>

/// How far the service is with an uploaded video. `Succeeded` and `Failed` are final.
typedef NS_ENUM(NSInteger, KLVideoUploadProcessingState) {
    KLVideoUploadProcessingStateInProgress,
    KLVideoUploadProcessingStatePending,
    KLVideoUploadProcessingStateSucceeded,
    KLVideoUploadProcessingStateFailed
};

/// What the service says of its work on an uploaded video. One thread at a time.
@interface KLVideoUploadProcessingInfo : KLBridged

/// What is no state raises `NSInvalidArgumentException`.
- (instancetype)initWithState:(KLVideoUploadProcessingState)state;
/// Stops the process.
- (instancetype)init;

/// The state's text on the wire: "in_progress", "pending", "succeeded", "failed"; nil for
/// any other number.
+ (NSString *)rawValueOfState:(KLVideoUploadProcessingState)state;
/// The state with this text, to the letter, as an NSNumber; nil for any other.
+ (NSNumber *)stateWithRawValue:(NSString *)rawValue;

/// "state".
@property(nonatomic, readonly) KLVideoUploadProcessingState state;
/// "checkAfterSecs", a double: how many seconds to wait before asking again; nil when the service
/// does not say.
@property(nonatomic, retain) NSNumber *checkAfterSeconds;
/// "progressPercent", a double: 0 to 100, as the service sends it; nil when it does not.
@property(nonatomic, retain) NSNumber *progressPercent;

@end
