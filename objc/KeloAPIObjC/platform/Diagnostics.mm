#import <KeloAPIObjC/platform/Diagnostics.h>

#include <KeloAPI/queues/Diagnostics.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>

using namespace KeloBridge;

static void setSink(const Completion &heard) {
    KeloAPI::Diagnostics::setSink(tellingIfHeard<KeloAPI::Diagnostics::Sink>(heard));
}

@implementation Diagnostics

+ (void)setSinkTarget:(id)target action:(SEL)action {
    setSink(Completion(target, action));
}

+ (void)setSink:(id)sink {
    setSink(Completion(sink));
}

@end
