#import <KeloAPIObjC/model/KLByline.h>

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Byline = KeloAPI::KLByline;

@implementation KLByline

+ (void)load {
    add<Byline>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLByline");
}

- (instancetype)initWithText:(NSString *)text {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Byline>(KeloBridge::text(text)));
}

- (NSString *)text {
    return string(held<Byline>(self).text());
}

- (NSURL *)iconUrl {
    return url(held<Byline>(self).iconUrl);
}

- (void)setIconUrl:(NSURL *)iconUrl {
    held<Byline>(self).iconUrl = optionalURL(iconUrl);
}

- (NSArray *)entities {
    return array(held<Byline>(self).entities);
}

- (void)setEntities:(NSArray *)entities {
    held<Byline>(self).entities = objects<KeloAPI::KLEntity>(entities);
}

@end
