#import <KeloAPIObjC/files/KLVideoUrlBitrateSettingParser.h>

#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using SettingParser = KeloAPI::KLVideoUrlBitrateSettingParser;

@implementation KLVideoUrlBitrateSettingParser

+ (void)load {
    addParser<SettingParser>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVideoUrlBitrateSettingParser");
}

- (instancetype)initWithIdentifier:(NSString *)identifier {
    return holdParser<SettingParser>(self, text(identifier));
}

- (NSString *)identifier {
    return string(held<NativeParser<SettingParser>>(self).parser()->identifier());
}

@end
