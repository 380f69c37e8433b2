#import <KeloAPIObjC/model/KLWatchPost.h>

#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::KLWatchPost;

@implementation KLWatchPost

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Native>());
}

- (NSString *)postId {
    return string(held<Native>(self).postId);
}

- (void)setPostId:(NSString *)postId {
    held<Native>(self).postId = optionalText(postId);
}

- (KLWatchUser *)user {
    return wrap(held<Native>(self).user);
}

- (void)setUser:(KLWatchUser *)user {
    held<Native>(self).user = shared<KeloAPI::KLWatchUser>(user);
}

- (NSString *)caption {
    return string(held<Native>(self).caption);
}

- (void)setCaption:(NSString *)caption {
    held<Native>(self).caption = optionalText(caption);
}

- (NSDate *)created {
    return date(held<Native>(self).created);
}

- (void)setCreated:(NSDate *)created {
    held<Native>(self).created = optionalDate(created);
}

- (NSString *)videoUrl {
    return string(held<Native>(self).videoUrl);
}

- (void)setVideoUrl:(NSString *)videoUrl {
    held<Native>(self).videoUrl = optionalText(videoUrl);
}

- (NSString *)thumbnailUrl {
    return string(held<Native>(self).thumbnailUrl);
}

- (void)setThumbnailUrl:(NSString *)thumbnailUrl {
    held<Native>(self).thumbnailUrl = optionalText(thumbnailUrl);
}

- (NSNumber *)liked {
    const auto liked = held<Native>(self).liked;
    return liked ? [NSNumber numberWithBool:*liked] : nil;
}

- (void)setLiked:(NSNumber *)liked {
    held<Native>(self).liked = optionalBool(liked);
}

- (KLRekelo *)currentUserRekelo {
    return wrap(held<Native>(self).currentUserRekelo);
}

- (void)setCurrentUserRekelo:(KLRekelo *)currentUserRekelo {
    held<Native>(self).currentUserRekelo = shared<KeloAPI::KLRekelo>(currentUserRekelo);
}

- (BOOL)rekeloed {
    return held<Native>(self).rekeloed();
}

@end
