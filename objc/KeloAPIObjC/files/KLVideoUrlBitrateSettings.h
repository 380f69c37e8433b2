#import <KeloAPIObjC/bridge/KLBridged.h>

@class KLVideoUrlBitrateSetting;

/// All offers of one video, lowest bitrate first, and the choice among them. One thread at a time.
@interface KLVideoUrlBitrateSettings : KLBridged

/// No offers.
- (instancetype)init;
/// Sorts `settings`, each a `KLVideoUrlBitrateSetting`, by their minimum bitrate; among equal ones
/// any order. Nil is none. An object of another class raises `NSInvalidArgumentException`.
- (instancetype)initWithBitrateSettings:(NSArray *)settings;

/// Never nil. Kept as assigned: what is assigned must be in ascending order of the minimum bitrate,
/// which every choice relies on.
@property(nonatomic, copy) NSArray *settings;

/// The first offer with that URL; nil when there is none.
- (KLVideoUrlBitrateSetting *)settingForRemoteURL:(NSURL *)url;
/// The offer of `format` for a connection of `bitrate`: the last whose minimum it reaches, else the
/// first of the format. Nil when the format is not offered.
- (KLVideoUrlBitrateSetting *)settingForFormat:(NSString *)format bitrate:(double)bitrate;
/// The offer of `format` with the highest minimum; nil when the format is not offered.
- (KLVideoUrlBitrateSetting *)highestSettingForFormat:(NSString *)format;
/// All offers of `format`, in their order.
- (NSArray *)settingsForFormat:(NSString *)format;

@end
