#import <KeloAPIObjC/bridge/KLBridged.h>

/// One offer of a video: a file in one format, for connections from one bitrate up. Does not change
/// once made.
@interface KLVideoUrlBitrateSetting : KLBridged

/// `identifier` and `version` may be nil. Nil and what is no URL for `remoteUrl` raise
/// `NSInvalidArgumentException`; one without characters stops the process unless both of those are
/// there.
- (instancetype)initWithRemoteUrl:(NSURL *)remoteUrl
                           format:(NSString *)format
                       identifier:(NSString *)identifier
                       minBitrate:(double)minBitrate
                          version:(NSString *)version;
/// Stops the process.
- (instancetype)init;

/// "videoUrl": where the file is fetched.
@property(nonatomic, readonly) NSURL *remoteUrl;
/// Names this file in every process and run: the identifier, "-" and the version where both are
/// there, otherwise a number made from the URL, which may be negative.
@property(nonatomic, readonly) NSString *uniqueId;
/// "format": one of `KLVideoFileFormat`'s as a rule.
@property(nonatomic, readonly) NSString *format;
/// "rate": the lowest bitrate at which this file should be chosen, in the service's unit.
@property(nonatomic, readonly) double minBitrate;
/// The video's own identity; nil when it is not known.
@property(nonatomic, readonly) NSString *identifier;
/// "id": the identity of this encoding; nil when the service gave none.
@property(nonatomic, readonly) NSString *version;

@end
