#import <KeloAPIObjC/parsing/KLEmpty.h>

#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>

using namespace KeloBridge;

@implementation KLEmpty

+ (void)load {
    add<KeloAPI::KLEmpty>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<KeloAPI::KLEmpty>());
}

@end

@implementation KLEmptyParser

+ (void)load {
    addParser<KeloAPI::KLEmptyParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLEmptyParser>(self);
}

@end
