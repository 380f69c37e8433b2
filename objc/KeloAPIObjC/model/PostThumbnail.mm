#import <KeloAPIObjC/model/PostThumbnail.h>

#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Coding.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Thumbnail = KeloAPI::PostThumbnail;

namespace {

/// Null without an address.
std::shared_ptr<Thumbnail> decodedThumbnail(NSCoder *coder) {
    const auto address = decodedURL(coder, @"url");
    if (!address) {
        return nullptr;
    }
    return std::make_shared<Thumbnail>(*address, [coder decodeInt64ForKey:@"width"],
                                       [coder decodeInt64ForKey:@"height"]);
}

} // namespace

@implementation PostThumbnail

+ (void)load {
    add<Thumbnail>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.PostThumbnail");
}

- (instancetype)initWithUrl:(NSURL *)url width:(int64_t)width height:(int64_t)height {
    self = [super init];
    return holdMade(self,
                    [&] { return std::make_shared<Thumbnail>(requiredURL(url), width, height); });
}

- (instancetype)initWithCoder:(NSCoder *)coder {
    self = [super init];
    return holdMade(self, [&] { return decodedThumbnail(coder); });
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
