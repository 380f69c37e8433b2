// In plain Objective-C, because GCC's Objective-C++ cannot get hold of a caught exception.
#import <Foundation/Foundation.h>

NSException *KeloRaised(void (*call)(void *), void *context) {
    @try {
        call(context);
    } @catch (NSException *exception) {
        return exception;
    }
    return nil;
}
