#import <KeloAPIObjC/bridge/KLBridged.h>

/// A long-form video. One thread at a time.
@interface KLLongform : KLBridged

/// Square, without a thumbnail and not to be fetched ahead. Nil and what is no URL for `url` raise
/// `NSInvalidArgumentException`.
- (instancetype)initWithLongformId:(NSString *)longformId
                               url:(NSURL *)url
                          duration:(double)duration;
/// Stops the process.
- (instancetype)init;

/// "longformId".
@property(nonatomic, readonly) NSString *longformId;
/// "videoUrl".
@property(nonatomic, readonly) NSURL *url;
/// "duration": in seconds.
@property(nonatomic, readonly) double duration;
/// "aspectRatio": the width over the height.
@property(nonatomic) double aspectRatio;
/// "thumbnailUrl"; nil where there is none, or no URL.
@property(nonatomic, copy) NSURL *thumbnailUrl;
/// Whether the host may fetch the video before it plays. The host's own: no answer sets it.
@property(nonatomic) BOOL canPreload;

@end
