#import <KeloAPIObjC/endpoints/UserEndpoint.h>

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Outcomes.hpp>

using namespace KeloBridge;
using Native = KeloAPI::UserEndpoint;

static void follow(UserEndpoint *endpoint, BOOL following, const Completion &heard) {
    const auto told = [heard](const KeloAPI::UserResult &result) {
        const Pool pool;
        heard(
            outcome([UserResult class], result, [](const KeloAPI::UserSuccess &) { return nil; }));
    };
    held<Native>(endpoint).setFollowingOnTwitter(following, told);
}

@implementation UserResult
@end

@implementation UserEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithUserId:(NSString *)userId {
    return hold(self,
                makeEndpoint<Native>(KeloAPI::Api::session(KeloAPI::SessionType::Authenticated),
                                     text(userId)));
}

- (instancetype)initWithSession:(Session *)session userId:(NSString *)userId {
    return holdMade(self, [&] {
        return makeEndpoint<Native>(shared<KeloAPI::Session>(session), text(userId));
    });
}

- (instancetype)initWithSession:(Session *)session {
    return [self initWithSession:session userId:@""];
}

- (NSString *)userId {
    return string(held<Native>(self).userId());
}

- (void)setFollowingOnTwitter:(BOOL)following target:(id)target action:(SEL)action {
    follow(self, following, Completion(target, action));
}

- (void)setFollowingOnTwitter:(BOOL)following completion:(KELO_BLOCK(UserResult *))completion {
    follow(self, following, Completion(completion));
}

@end
