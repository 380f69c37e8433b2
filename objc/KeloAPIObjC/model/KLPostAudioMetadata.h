#import <KeloAPIObjC/bridge/KLBridged.h>

/// The music track of a post. One thread at a time.
@interface KLPostAudioMetadata : KLBridged

/// Nil when "trackName" or "artistName" of the object "track" is missing or no text, or "trackId"
/// missing or no number. Nil for `json` is an empty object; what JSON cannot tell counts as
/// missing.
- (instancetype)initWithJson:(NSDictionary *)json;
/// Stops the process.
- (instancetype)init;

/// "artistName" and "trackName" of "track". Nil becomes an empty text.
@property(nonatomic, copy) NSString *artistName;
@property(nonatomic, copy) NSString *trackName;
/// "trackId", a number beside "track", as decimal text. Nil becomes an empty text.
@property(nonatomic, copy) NSString *trackId;
/// "itunesId" of "track": the track's number in the music store; nil when missing or no number.
@property(nonatomic, readonly) NSNumber *iTunesId;
/// "itunes_affiliate_token" of "track"; nil when missing or no text.
@property(nonatomic, readonly) NSString *affiliateToken;
/// "hasAudioTrackTimeline" of "track"; no when missing or no number.
@property(nonatomic, readonly) BOOL hasTrackTimeline;
/// "albumArtUrl" of "track"; nil when missing or no URL.
@property(nonatomic, copy) NSURL *albumArtUrl;

@end
