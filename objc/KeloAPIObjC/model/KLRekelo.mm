#import <KeloAPIObjC/model/KLRekelo.h>

#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::KLRekelo;

@implementation KLRekelo

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Native>());
}

- (NSString *)rekeloId {
    return string(held<Native>(self).rekeloId);
}

- (void)setRekeloId:(NSString *)rekeloId {
    held<Native>(self).rekeloId = optionalText(rekeloId);
}

- (KLWatchUser *)user {
    return wrap(held<Native>(self).user);
}

- (void)setUser:(KLWatchUser *)user {
    held<Native>(self).user = shared<KeloAPI::KLWatchUser>(user);
}

@end
