#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLVideoUploadProcessingInfo;

/// An upload session of a long-form video, as the service last described it. One thread at a time.
@interface KLVideoUpload : KLBridged

/// A session of which nothing else is known.
- (instancetype)initWithMediaId:(NSString *)mediaId;
/// Stops the process.
- (instancetype)init;

/// "mediaId", sent as text or as a number: names the session in every later call.
@property(nonatomic, readonly) NSString *mediaId;
/// "expiresAfterSecs" from the moment of parsing: when the service forgets the session; nil when it
/// does not say.
@property(nonatomic, copy) NSDate *expireDate;
/// "processingInfo"; nil until the service reports it.
@property(nonatomic, retain) KLVideoUploadProcessingInfo *processingInfo;
/// "size", a signed integer: in bytes; nil when the service does not say.
@property(nonatomic, retain) NSNumber *size;

@end
