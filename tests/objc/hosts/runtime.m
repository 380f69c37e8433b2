// Names of classes, and the runtime's own lock.
#import "Host.h"

#include <pthread.h>
#include <sched.h>

static void oneClassPerName(void) {
    CHECK([Session class] == NSClassFromString(@"KeloAPI.Session"));
    CHECK([Session class] == NSClassFromString(@"Session"));
    CHECK([NSStringFromClass([Session class]) isEqual:@"KeloAPI.Session"]);
    CHECK([MeEndpoint class] == NSClassFromString(@"KeloAPI.MeEndpoint"));
    CHECK([MeEndpoint class] == NSClassFromString(@"MeEndpoint"));
    CHECK([NSStringFromClass([MeEndpoint class]) isEqual:@"KeloAPI.MeEndpoint"]);
    Session *session =
        [[[Session alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    CHECK([session isMemberOfClass:[Session class]]);
    CHECK([[Api session:SessionTypeUnAuthenticated] isMemberOfClass:[Session class]]);
    MeEndpoint *endpoint = [[[MeEndpoint alloc] initWithSession:session] autorelease];
    CHECK([endpoint isMemberOfClass:[MeEndpoint class]]);
    CHECK([endpoint isKindOfClass:[Endpoint class]]);
}

@interface DerivedSession : Session
@end

@implementation DerivedSession
@end

static void classesDerivedFromOneWithTwoNames(void) {
    Session *session =
        [[[DerivedSession alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    CHECK([session isMemberOfClass:[DerivedSession class]]);
    CHECK([session isKindOfClass:[Session class]]);
    CHECK([DerivedSession superclass] == [Session class]);
    CHECK([NSStringFromClass([session class]) isEqual:@"DerivedSession"]);
}

static KLPagedData *page;
static KLPagedData *known;
static volatile BOOL isReady;
static volatile BOOL mayGo;

/// Asks for the first object ever of a class: the runtime makes the class ready, under its lock.
static void *askFirst(void *nothing) {
    GSRegisterCurrentThread();
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    __atomic_store_n(&isReady, YES, __ATOMIC_SEQ_CST);
    while (!__atomic_load_n(&mayGo, __ATOMIC_SEQ_CST)) {
        sched_yield();
    }
    CHECK(page.metadata != nil);
    [pool drain];
    GSUnregisterCurrentThread();
    return nothing;
}

/// Uses the library while the runtime makes it ready.
@interface SlowToStart : NSObject
@end

@implementation SlowToStart
+ (void)initialize {
    __atomic_store_n(&mayGo, YES, __ATOMIC_SEQ_CST);
    for (int i = 0; i < 20000; ++i) {
        NSAutoreleasePool *pool = [NSAutoreleasePool new];
        CHECK([known objectAtIndex:0] != nil);
        [pool drain];
        if (i % 100 == 0) {
            sched_yield();
        }
    }
}
@end

/// Run by itself, because a class starts once in a process.
static void objectsInInitialize(void) {
    KLPagedDataParser *parser =
        [[[KLPagedDataParser alloc] initWithItemParser:[[PostParser new] autorelease]] autorelease];
    page = [parser parse:[NSDictionary dictionary] error:NULL];
    known = [[[KLPagedData alloc] init] autorelease];
    [known append:[[KLWatchPost new] autorelease]];
    pthread_t thread;
    CHECK(pthread_create(&thread, NULL, askFirst, NULL) == 0);
    while (!__atomic_load_n(&isReady, __ATOMIC_SEQ_CST)) {
        sched_yield();
    }
    [SlowToStart class];
    CHECK(pthread_join(thread, NULL) == 0);
}

const HostCase runtimeCases[] = {
    {"one-class-per-name", oneClassPerName},
    {"classes-derived-from-one-with-two-names", classesDerivedFromOneWithTwoNames},
    {"objects-in-initialize", objectsInInitialize},
    {NULL, NULL},
};
