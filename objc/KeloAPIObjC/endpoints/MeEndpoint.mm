#import <KeloAPIObjC/endpoints/MeEndpoint.h>

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Outcomes.hpp>
#include <KeloAPIObjC/bridge/RuntimeName.hpp>

using namespace KeloBridge;
using Native = KeloAPI::MeEndpoint;

static void get(MeEndpoint *endpoint, const Completion &heard) {
    held<Native>(endpoint).get([heard](const KeloAPI::MeResult &result) {
        const Pool pool;
        heard(outcome([MeResult class], result,
                      [](const KeloAPI::MeSuccess &success) { return wrap(success.user); }));
    });
}

@implementation MeResult

- (KLWatchUser *)user {
    return [self content];
}

@end

@implementation MeEndpoint

+ (void)load {
    add<Native>(self);
    nameAtRuntime(self, "KeloAPI.MeEndpoint");
}

- (instancetype)init {
    return hold(self,
                makeEndpoint<Native>(KeloAPI::Api::session(KeloAPI::SessionType::Authenticated)));
}

- (instancetype)initWithSession:(Session *)session {
    return holdMade(self, [&] { return makeEndpoint<Native>(shared<KeloAPI::Session>(session)); });
}

- (void)getWithTarget:(id)target action:(SEL)action {
    get(self, Completion(target, action));
}

- (void)get:(KELO_BLOCK(MeResult *))completion {
    get(self, Completion(completion));
}

@end
