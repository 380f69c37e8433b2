#import <KeloAPIObjC/loops/KLLongform.h>

#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Longform = KeloAPI::KLLongform;

@implementation KLLongform

+ (void)load {
    add<Longform>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLLongform");
}

- (instancetype)initWithLongformId:(NSString *)longformId
                               url:(NSURL *)url
                          duration:(double)duration {
    self = [super init];
    return holdMade(self, [&] {
        return std::make_shared<Longform>(text(longformId), requiredURL(url), duration);
    });
}

- (NSString *)longformId {
    return string(held<Longform>(self).longformId());
}

- (NSURL *)url {
    return KeloBridge::url(held<Longform>(self).url());
}

- (double)duration {
    return held<Longform>(self).duration();
}

- (double)aspectRatio {
    return held<Longform>(self).aspectRatio;
}

- (void)setAspectRatio:(double)aspectRatio {
    held<Longform>(self).aspectRatio = aspectRatio;
}

- (NSURL *)thumbnailUrl {
    return KeloBridge::url(held<Longform>(self).thumbnailUrl);
}

- (void)setThumbnailUrl:(NSURL *)thumbnailUrl {
    held<Longform>(self).thumbnailUrl = optionalURL(thumbnailUrl);
}

- (BOOL)canPreload {
    return held<Longform>(self).canPreload;
}

- (void)setCanPreload:(BOOL)canPreload {
    held<Longform>(self).canPreload = canPreload != NO;
}

@end
