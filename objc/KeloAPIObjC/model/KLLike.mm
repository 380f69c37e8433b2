#import <KeloAPIObjC/model/KLLike.h>

#include <KeloAPI/model/KLLike.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::KLLike;

@implementation KLLike

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<Native>());
}

- (NSString *)likeId {
    return string(held<Native>(self).likeId);
}

- (void)setLikeId:(NSString *)likeId {
    held<Native>(self).likeId = optionalText(likeId);
}

- (KLWatchUser *)user {
    return wrap(held<Native>(self).user);
}

- (void)setUser:(KLWatchUser *)user {
    held<Native>(self).user = shared<KeloAPI::KLWatchUser>(user);
}

@end
