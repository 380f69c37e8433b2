#import <KeloAPIObjC/endpoints/SoundboardEndpoint.h>

#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Lists.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::SoundboardEndpoint;

static id fetchSounds(SoundboardEndpoint *endpoint, const Completion &heard) {
    return wrap(held<Native>(endpoint).fetchSounds(
        [heard](const std::vector<std::shared_ptr<KeloAPI::SoundboardSound>> &sounds,
                const std::optional<KeloAPI::Error> &failure) {
            const Pool pool;
            heard(array(sounds), error(failure));
        }));
}

@implementation SoundboardEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)initWithSession:(Session *)session {
    return holdMade(self, [&] { return makeEndpoint<Native>(shared<KeloAPI::Session>(session)); });
}

- (id<EndpointRequest>)fetchSoundsWithTarget:(id)target action:(SEL)action {
    return fetchSounds(self, Completion(target, action));
}

- (id<EndpointRequest>)fetchSoundsWithCompletion:(KELO_BLOCK(NSArray *, NSError *))completion {
    return fetchSounds(self, Completion(completion));
}

@end
