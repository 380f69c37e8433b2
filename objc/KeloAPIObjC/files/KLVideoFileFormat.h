#import <Foundation/Foundation.h>

/// The names of the formats that a video is offered in. Formats are plain texts, compared to the
/// letter; the service may name others. Any thread.
@interface KLVideoFileFormat : NSObject

/// "h264".
+ (NSString *)MP4;
/// "hls".
+ (NSString *)HLS;
/// "h264-preview".
+ (NSString *)PREVIEW;

@end
