#import <KeloAPIObjC/bridge/Caught.h>

NSException *KLCaught(void (*call)(void *), void *context) {
    @try {
        call(context);
    } @catch (NSException *exception) {
        return exception;
    }
    return nil;
}

void KLInPool(void (*call)(void *), void *context) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    id raised = nil;
    @try {
        call(context);
    } @catch (id object) { // hosts may throw any
        raised = [object retain];
    } @finally {
        [pool drain];
    }
    if (raised != nil) {
        @throw [raised autorelease];
    }
}
