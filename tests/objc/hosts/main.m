// What a host in plain Objective-C does with its objects and pools. Called with the name of a case;
// without one it goes through all. A case that does not hold, or crashes, ends the process.
#import "Host.h"

#include <string.h>

int main(int argc, char **argv) {
    const HostCase *const groups[] = {ownershipCases, exceptionCases, runtimeCases};
    int count = 0;
    KeloMakeWhatStays();
    for (size_t group = 0; group < sizeof groups / sizeof groups[0]; ++group) {
        for (const HostCase *one = groups[group]; one->name != NULL; ++one) {
            if (argc > 1 && strcmp(argv[1], one->name) != 0) {
                continue;
            }
            NSAutoreleasePool *pool = [NSAutoreleasePool new];
            one->run();
            [pool drain];
            printf("%s holds\n", one->name);
            ++count;
        }
    }
    CHECK(count > 0);
    return 0;
}
