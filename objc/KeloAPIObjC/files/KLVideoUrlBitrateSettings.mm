#import <KeloAPIObjC/files/KLVideoUrlBitrateSettings.h>

#import <KeloAPIObjC/files/KLVideoUrlBitrateSetting.h>

#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Setting = KeloAPI::KLVideoUrlBitrateSetting;
using Settings = KeloAPI::KLVideoUrlBitrateSettings;

@implementation KLVideoUrlBitrateSettings

+ (void)load {
    add<Settings>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Settings>());
}

- (instancetype)initWithBitrateSettings:(NSArray *)settings {
    self = [super init];
    return holdMade(self, [&] { return std::make_shared<Settings>(objects<Setting>(settings)); });
}

- (NSArray *)settings {
    return array(held<Settings>(self).settings());
}

- (void)setSettings:(NSArray *)settings {
    held<Settings>(self).setSettings(objects<Setting>(settings));
}

- (KLVideoUrlBitrateSetting *)settingForRemoteURL:(NSURL *)url {
    const auto known = optionalURL(url);
    return known ? wrap(held<Settings>(self).settingForRemoteURL(*known)) : nil;
}

- (KLVideoUrlBitrateSetting *)settingForFormat:(NSString *)format bitrate:(double)bitrate {
    return wrap(held<Settings>(self).settingForFormat(text(format), bitrate));
}

- (KLVideoUrlBitrateSetting *)highestSettingForFormat:(NSString *)format {
    return wrap(held<Settings>(self).highestSettingForFormat(text(format)));
}

- (NSArray *)settingsForFormat:(NSString *)format {
    return array(held<Settings>(self).settingsForFormat(text(format)));
}

@end
