#import <KeloAPIObjC/loops/KLPostProcessStatus.h>

#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>

using namespace KeloBridge;
using ProcessStatus = KeloAPI::KLPostProcessStatus;

namespace {

KeloAPI::KLPostProcessStatusState statusState(KLPostProcessStatusState state) {
    const auto known = KeloAPI::postProcessStatusStateOf(state);
    if (!known) {
        [NSException raise:NSInvalidArgumentException
                    format:@"no state of a post: %ld", static_cast<long>(state)];
    }
    return *known;
}

} // namespace

@implementation KLPostProcessStatus

+ (void)load {
    add<ProcessStatus>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLPostProcessStatus");
}

- (instancetype)initWithState:(KLPostProcessStatusState)state {
    self = [super init];
    return holdMade(self, [&] { return std::make_shared<ProcessStatus>(statusState(state)); });
}

- (KLPostProcessStatusState)state {
    return static_cast<KLPostProcessStatusState>(held<ProcessStatus>(self).state());
}

@end
