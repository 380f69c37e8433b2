#import <KeloAPIObjC/parsing/AnyObjectJsonParser.h>

/// Makes a `KLVideoUrlBitrateSetting` of one offer of a video. Needs "videoUrl" as a URL and
/// "format" as text (the code 3 of the domain "KeloAPI.JsonParseError"); "rate" is 0 where it is no
/// number.
@interface KLVideoUrlBitrateSettingParser : AnyObjectJsonParser

/// `identifier` becomes that of every setting made.
- (instancetype)initWithIdentifier:(NSString *)identifier;
/// Stops the process.
- (instancetype)init;

@property(nonatomic, readonly) NSString *identifier;

@end
