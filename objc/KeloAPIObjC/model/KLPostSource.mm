#import <KeloAPIObjC/model/KLPostSource.h>

#include <KeloAPI/model/KLPostSource.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using PostSource = KeloAPI::KLPostSource;

@implementation KLPostSource

+ (void)load {
    add<PostSource>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLPostSource");
}

- (instancetype)initWithJSON:(NSDictionary *)json {
    self = [super init];
    return holdMade(self, [&] {
        const auto read = document(json);
        return PostSource::fromJSON(*read.root().object());
    });
}

- (NSString *)postId {
    return string(held<PostSource>(self).postId());
}

- (NSString *)userId {
    return string(held<PostSource>(self).userId());
}

- (NSString *)username {
    return string(held<PostSource>(self).username());
}

- (NSString *)caption {
    return string(held<PostSource>(self).caption());
}

- (NSURL *)avatarUrl {
    return url(held<PostSource>(self).avatarUrl);
}

- (void)setAvatarUrl:(NSURL *)avatarUrl {
    held<PostSource>(self).avatarUrl = optionalURL(avatarUrl);
}

- (NSURL *)thumbnailUrl {
    return url(held<PostSource>(self).thumbnailUrl);
}

- (void)setThumbnailUrl:(NSURL *)thumbnailUrl {
    held<PostSource>(self).thumbnailUrl = optionalURL(thumbnailUrl);
}

- (KLPostSourceContentType)contentType {
    return static_cast<KLPostSourceContentType>(held<PostSource>(self).contentType());
}

@end
