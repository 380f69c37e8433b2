#import <KeloAPIObjC/bridge/Caught.h>

NSException *KLCaught(void (*call)(void *), void *context) {
    @try {
        call(context);
    } @catch (NSException *exception) {
        return exception;
    }
    return nil;
}
