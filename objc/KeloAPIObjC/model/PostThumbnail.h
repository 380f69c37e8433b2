#import <KeloAPIObjC/bridge/KLBridged.h>

/// A thumbnail image and its size in pixels. Does not change once made. Archives every property
/// under its own name; without an address there is none in an archive, and sizes that an archive
/// lacks are 0.
@interface PostThumbnail : KLBridged <NSCoding>

/// Nil for the address raises `NSInvalidArgumentException`.
- (instancetype)initWithUrl:(NSURL *)url width:(int64_t)width height:(int64_t)height;
/// Stops the process.
- (instancetype)init;

@property(nonatomic, readonly) NSURL *url;
@property(nonatomic, readonly) int64_t width;
@property(nonatomic, readonly) int64_t height;

@end
