#import <KeloAPIObjC/bridge/KLBlocks.h>

/// The library's few diagnostic lines, which go to standard output unless a host takes them.
@interface Diagnostics : NSObject

/// From now on `action` takes each line, an NSString without its line end; a nil target restores
/// standard output. It is called on any thread, one call at a time, and must neither write a line
/// itself nor set a sink.
+ (void)setSinkTarget:(id)target action:(SEL)action;
#if __has_feature(blocks)
+ (void)setSink:(void (^)(NSString *line))sink;
#endif

@end
