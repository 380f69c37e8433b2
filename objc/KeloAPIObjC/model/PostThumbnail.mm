#import <KeloAPIObjC/model/PostThumbnail.h>

#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Thumbnail = KeloAPI::PostThumbnail;

@implementation PostThumbnail

+ (void)load {
    add<Thumbnail>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.PostThumbnail");
}

- (instancetype)initWithUrl:(NSURL *)url width:(int64_t)width height:(int64_t)height {
    self = [super init];
    return self == nil ? nil
                       : hold(self, std::make_shared<Thumbnail>(requiredURL(url), width, height));
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    const auto address = decodedURL(coder, @"url");
    if (self == nil || !address) {
        [self release];
        return nil;
    }
    const int64_t width = [coder decodeInt64ForKey:@"width"];
    const int64_t height = [coder decodeInt64ForKey:@"height"];
    return hold(self, std::make_shared<Thumbnail>(*address, width, height));
}

- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:self.url forKey:@"url"];
    [coder encodeInt64:self.width forKey:@"width"];
    [coder encodeInt64:self.height forKey:@"height"];
}

- (NSURL *)url {
    return KeloBridge::url(held<Thumbnail>(self).url());
}

- (int64_t)width {
    return held<Thumbnail>(self).width();
}

- (int64_t)height {
    return held<Thumbnail>(self).height();
}

@end
