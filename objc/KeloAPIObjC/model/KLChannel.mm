#import <KeloAPIObjC/model/KLChannel.h>

#import <KeloAPIObjC/parsing/KLPagedData.h>

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Channel = KeloAPI::KLChannel;
using PagedData = KeloAPI::KLPagedData;

@implementation KLChannel

+ (void)load {
    add<Channel>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Channel>());
}

- (instancetype)initWithChannelId:(NSString *)channelId
                             name:(NSString *)name
                     fontColorHex:(NSString *)fontColorHex
               backgroundColorHex:(NSString *)backgroundColorHex {
    self = [super init];
    return self == nil ? nil
                       : hold(self, std::make_shared<Channel>(text(channelId), text(name),
                                                              text(fontColorHex),
                                                              text(backgroundColorHex)));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    const auto channel = std::make_shared<Channel>();
    channel->channelId = decodedText(coder, @"channelId").value_or("");
    channel->name = decodedText(coder, @"name").value_or("");
    channel->created = decodedDate(coder, @"created");
    channel->iconUrl = decodedURL(coder, @"iconUrl");
    channel->iconRetinaUrl = decodedURL(coder, @"iconRetinaUrl");
    channel->fontColorHex = decodedText(coder, @"fontColorHex").value_or(channel->fontColorHex);
    channel->backgroundColorHex =
        decodedText(coder, @"backgroundColorHex").value_or(channel->backgroundColorHex);
    channel->channelDescription = decodedText(coder, @"channelDescription");
    return self == nil ? nil : hold(self, channel);
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.channelId forKey:@"channelId"];
    [coder encodeObject:self.name forKey:@"name"];
    [coder encodeObject:self.created forKey:@"created"];
    [coder encodeObject:self.iconUrl forKey:@"iconUrl"];
    [coder encodeObject:self.iconRetinaUrl forKey:@"iconRetinaUrl"];
    [coder encodeObject:self.fontColorHex forKey:@"fontColorHex"];
    [coder encodeObject:self.backgroundColorHex forKey:@"backgroundColorHex"];
    [coder encodeObject:self.channelDescription forKey:@"channelDescription"];
}

- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[KLChannel class]] &&
           held<Channel>(self) == held<Channel>(static_cast<KLChannel *>(object));
}

- (NSUInteger)hash {
    return std::hash<Channel>()(held<Channel>(self));
}

- (NSString *)channelId {
    return string(held<Channel>(self).channelId);
}

- (void)setChannelId:(NSString *)channelId {
    held<Channel>(self).channelId = text(channelId);
}

- (NSString *)name {
    return string(held<Channel>(self).name);
}

- (void)setName:(NSString *)name {
    held<Channel>(self).name = text(name);
}

- (NSString *)fontColorHex {
    return string(held<Channel>(self).fontColorHex);
}

- (void)setFontColorHex:(NSString *)fontColorHex {
    held<Channel>(self).fontColorHex = text(fontColorHex);
}

- (NSString *)backgroundColorHex {
    return string(held<Channel>(self).backgroundColorHex);
}

- (void)setBackgroundColorHex:(NSString *)backgroundColorHex {
    held<Channel>(self).backgroundColorHex = text(backgroundColorHex);
}

- (NSURL *)iconUrl {
    return url(held<Channel>(self).iconUrl);
}

- (void)setIconUrl:(NSURL *)iconUrl {
    held<Channel>(self).iconUrl = optionalURL(iconUrl);
}

- (NSURL *)iconRetinaUrl {
    return url(held<Channel>(self).iconRetinaUrl);
}

- (void)setIconRetinaUrl:(NSURL *)iconRetinaUrl {
    held<Channel>(self).iconRetinaUrl = optionalURL(iconRetinaUrl);
}

- (NSURL *)exploreIconRetinaUrl {
    return url(held<Channel>(self).exploreIconRetinaUrl);
}

- (void)setExploreIconRetinaUrl:(NSURL *)exploreIconRetinaUrl {
    held<Channel>(self).exploreIconRetinaUrl = optionalURL(exploreIconRetinaUrl);
}

- (BOOL)following {
    return held<Channel>(self).following;
}

- (void)setFollowing:(BOOL)following {
    held<Channel>(self).following = following;
}

- (NSDate *)created {
    return date(held<Channel>(self).created);
}

- (void)setCreated:(NSDate *)created {
    held<Channel>(self).created = optionalDate(created);
}

- (NSString *)channelDescription {
    return string(held<Channel>(self).channelDescription);
}

- (void)setChannelDescription:(NSString *)channelDescription {
    held<Channel>(self).channelDescription = optionalText(channelDescription);
}

- (NSString *)vanityPathSuffix {
    return string(held<Channel>(self).vanityPathSuffix);
}

- (void)setVanityPathSuffix:(NSString *)vanityPathSuffix {
    held<Channel>(self).vanityPathSuffix = optionalText(vanityPathSuffix);
}

- (KLPagedData *)timelineData {
    return wrap(held<Channel>(self).timelineData);
}

- (void)setTimelineData:(KLPagedData *)timelineData {
    held<Channel>(self).timelineData = shared<PagedData>(timelineData);
}

- (BOOL)showRecent {
    return held<Channel>(self).showRecent;
}

- (void)setShowRecent:(BOOL)showRecent {
    held<Channel>(self).showRecent = showRecent;
}

@end
