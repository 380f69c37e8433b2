#import <KeloAPIObjC/model/SoundboardSound.h>

#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Sound = KeloAPI::SoundboardSound;

namespace {

/// Null unless the address, the identifier and the name are there.
std::shared_ptr<Sound> decodedSound(NSCoder *coder) {
    const auto soundUrl = decodedURL(coder, @"soundUrl");
    const auto soundId = decodedText(coder, @"soundId");
    const auto name = decodedText(coder, @"name");
    if (!soundUrl || !soundId || !name) {
        return nullptr;
    }
    return std::make_shared<Sound>(*name, *soundId, soundUrl->absoluteString(),
                                   [coder decodeBoolForKey:@"featured"] != NO,
                                   decodedText(coder, @"sourcePostId"));
}

} // namespace

@implementation SoundboardSound

+ (void)load {
    add<Sound>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.SoundboardSound");
}

- (instancetype)initWithName:(NSString *)name
                     soundId:(NSString *)soundId
                    soundUrl:(NSString *)soundUrl
                    featured:(BOOL)featured
                sourcePostId:(NSString *)sourcePostId {
    self = [super init];
    return self == nil
               ? nil
               : hold(self, std::make_shared<Sound>(text(name), text(soundId), text(soundUrl),
                                                    featured != NO, optionalText(sourcePostId)));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] { return decodedSound(coder); });
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.soundUrl forKey:@"soundUrl"];
    [coder encodeObject:self.name forKey:@"name"];
    [coder encodeObject:self.sourcePostId forKey:@"sourcePostId"];
    [coder encodeObject:self.soundId forKey:@"soundId"];
    [coder encodeBool:self.featured forKey:@"featured"];
}

- (NSString *)name {
    return string(held<Sound>(self).name());
}

- (NSString *)soundId {
    return string(held<Sound>(self).soundId());
}

- (NSURL *)soundUrl {
    return url(held<Sound>(self).soundUrl());
}

- (NSString *)sourcePostId {
    return string(held<Sound>(self).sourcePostId());
}

- (BOOL)featured {
    return held<Sound>(self).featured();
}

@end
