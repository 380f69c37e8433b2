#import <KeloAPIObjC/files/KLVideoUrlBitrateSetting.h>

#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Setting = KeloAPI::KLVideoUrlBitrateSetting;

@implementation KLVideoUrlBitrateSetting

+ (void)load {
    add<Setting>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVideoUrlBitrateSetting");
}

- (instancetype)initWithRemoteUrl:(NSURL *)remoteUrl
                           format:(NSString *)format
                       identifier:(NSString *)identifier
                       minBitrate:(double)minBitrate
                          version:(NSString *)version {
    self = [super init];
    return holdMade(self, [&] {
        return std::make_shared<Setting>(requiredURL(remoteUrl), text(format),
                                         optionalText(identifier), minBitrate,
                                         optionalText(version));
    });
}

- (NSURL *)remoteUrl {
    return url(held<Setting>(self).remoteUrl());
}

- (NSString *)uniqueId {
    return string(held<Setting>(self).uniqueId());
}

- (NSString *)format {
    return string(held<Setting>(self).format());
}

- (double)minBitrate {
    return held<Setting>(self).minBitrate();
}

- (NSString *)identifier {
    return string(held<Setting>(self).identifier());
}

- (NSString *)version {
    return string(held<Setting>(self).version());
}

@end
