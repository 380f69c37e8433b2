#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLVideoUrlBitrateSetting;

/// Reads the offers of one video. Usable on any thread.
@interface KLVideoUrlBitrateSettingParser : KLBridged

/// `identifier` becomes that of every setting made.
- (instancetype)initWithIdentifier:(NSString *)identifier;
/// Stops the process.
- (instancetype)init;

@property(nonatomic, readonly) NSString *identifier;

/// Needs "videoUrl" as a URL and "format" as text; "rate" is 0 where it is no number. Nil for what
/// lacks these, as nil does, with an error of the domain "KeloAPI.JsonParseError" and code 3. What
/// JSON cannot tell counts as missing.
- (KLVideoUrlBitrateSetting *)parse:(NSDictionary *)json error:(NSError **)error;

@end
