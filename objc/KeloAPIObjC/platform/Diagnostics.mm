#import <KeloAPIObjC/platform/Diagnostics.h>

#include <KeloAPI/queues/Diagnostics.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;

static void setSink(const Completion &heard) {
    if (!heard) {
        KeloAPI::Diagnostics::setSink({});
        return;
    }
    KeloAPI::Diagnostics::setSink([heard](std::string_view line) {
        const Pool pool;
        heard(string(line));
    });
}

@implementation Diagnostics

+ (void)setSinkTarget:(id)target action:(SEL)action {
    setSink(Completion(target, action));
}

+ (void)setSink:(KELO_BLOCK(NSString *))sink {
    setSink(Completion(sink));
}

@end
