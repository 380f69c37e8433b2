#import <KeloAPIObjC/parsing/KLEmpty.h>

#include <KeloAPI/parsing/KLEmpty.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

@implementation KLEmpty

+ (void)load {
    KeloBridge::add<KeloAPI::KLEmpty>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : KeloBridge::hold(self, std::make_shared<KeloAPI::KLEmpty>());
}

@end
