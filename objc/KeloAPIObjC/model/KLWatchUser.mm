#import <KeloAPIObjC/model/KLWatchUser.h>

#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::KLWatchUser;

@implementation KLWatchUser

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Native>());
}

- (NSString *)username {
    return string(held<Native>(self).username);
}

- (void)setUsername:(NSString *)username {
    held<Native>(self).username = optionalText(username);
}

- (KLLoopData *)loopData {
    return wrap(held<Native>(self).loopData);
}

- (void)setLoopData:(KLLoopData *)loopData {
    held<Native>(self).loopData = shared<KeloAPI::LoopData>(loopData);
}

@end
