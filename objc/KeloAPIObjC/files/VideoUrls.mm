#import <KeloAPIObjC/files/KLVideoFileFormat.h>
#import <KeloAPIObjC/files/KLVideoUrlBitrateSetting.h>
#import <KeloAPIObjC/files/KLVideoUrlBitrateSettingParser.h>
#import <KeloAPIObjC/files/KLVideoUrlBitrateSettings.h>

#include <KeloAPI/files/KLVideoFileFormat.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>

using namespace KeloBridge;
using SettingParser = KeloAPI::KLVideoUrlBitrateSettingParser;
using Setting = KeloAPI::KLVideoUrlBitrateSetting;

@implementation KLVideoFileFormat

+ (NSString *)MP4 {
    return string(KeloAPI::KLVideoFileFormat::MP4);
}

+ (NSString *)HLS {
    return string(KeloAPI::KLVideoFileFormat::HLS);
}

+ (NSString *)PREVIEW {
    return string(KeloAPI::KLVideoFileFormat::PREVIEW);
}

@end

@implementation KLVideoUrlBitrateSetting

KELO_STANDS_FOR(KLVideoUrlBitrateSetting, Setting)
KELO_NO_INIT()
KELO_READS(NSURL *, remoteUrl)
KELO_READS(NSString *, uniqueId, format, identifier, version)
KELO_READS(double, minBitrate)

- (instancetype)initWithRemoteUrl:(NSURL *)remoteUrl
                           format:(NSString *)format
                       identifier:(NSString *)identifier
                       minBitrate:(double)minBitrate
                          version:(NSString *)version {
    return KELO_MAKE(requiredURL(remoteUrl, @"remoteUrl"), text(format), optionalText(identifier),
                     minBitrate, optionalText(version));
}

@end

@implementation KLVideoUrlBitrateSettingParser

KELO_STANDS_FOR(KLVideoUrlBitrateSettingParser, NativeParser<SettingParser>)
KELO_NO_INIT()

- (instancetype)initWithIdentifier:(NSString *)identifier {
    return adoptMade(self, [&] { return makeParser<SettingParser>(text(identifier)); });
}

- (NSString *)identifier {
    return string(native(self).parser()->identifier());
}

@end

@implementation KLVideoUrlBitrateSettings

KELO_STANDS_FOR(KLVideoUrlBitrateSettings, KeloAPI::KLVideoUrlBitrateSettings)
KELO_INIT()
KELO_READS(NSArray *, settings)

- (instancetype)initWithBitrateSettings:(NSArray *)settings {
    return KELO_MAKE(objects<Setting>(settings));
}

- (void)setSettings:(NSArray *)settings {
    native(self).setSettings(objects<Setting>(settings));
}

- (KLVideoUrlBitrateSetting *)settingForRemoteURL:(NSURL *)url {
    const auto known = optionalURL(url);
    return known ? toObjC(native(self).settingForRemoteURL(*known)) : nil;
}

- (KLVideoUrlBitrateSetting *)settingForFormat:(NSString *)format bitrate:(double)bitrate {
    return toObjC(native(self).settingForFormat(text(format), bitrate));
}

- (KLVideoUrlBitrateSetting *)highestSettingForFormat:(NSString *)format {
    return toObjC(native(self).highestSettingForFormat(text(format)));
}

- (NSArray *)settingsForFormat:(NSString *)format {
    return toObjC(native(self).settingsForFormat(text(format)));
}

@end
