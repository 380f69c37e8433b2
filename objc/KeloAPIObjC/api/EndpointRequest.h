#import <KeloAPIObjC/bridge/KLBlocks.h>

@protocol EndpointRequest;

#if __has_feature(blocks)
typedef void (^EndpointProgressHandler)(id<EndpointRequest> request, double fraction);
#endif

/// The handle of a call under way.
@protocol EndpointRequest <NSObject>

/// `action` takes the handle and the fraction done, a double: moved bytes divided by expected
/// bytes, without any check. An unknown total makes it negative, an empty one infinite or
/// not-a-number. It is called on the main queue as bytes move and looked up at every report. The
/// target is kept alive until the call has ended; nil for none, as by default. On the main queue's
/// thread.
- (void)setProgressTarget:(id)target action:(SEL)action;
#if __has_feature(blocks)
/// The same as a block; nil for none and for a target with its action.
@property(nonatomic, copy) EndpointProgressHandler progressHandler;
#endif

/// Ends the call: its completion hears of the cancellation, once and asynchronously. After the end
/// it does nothing. From any thread.
- (void)cancel;

@end
