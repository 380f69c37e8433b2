#import <KeloAPIObjC/loops/KLLongformViews.h>

#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::KLLongformViews;

@implementation KLLongformViews

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithLongformId:(NSString *)longformId count:(NSInteger)count {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Native>(text(longformId), count));
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLLongformViews");
}

- (NSString *)longformId {
    return string(held<Native>(self).longformId());
}

- (NSInteger)count {
    return held<Native>(self).count();
}

@end
