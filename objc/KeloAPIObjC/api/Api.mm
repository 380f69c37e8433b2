#import <KeloAPIObjC/api/Api.h>

#include <KeloAPI/api/Api.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Delegates.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/SessionTypes.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Api;

/// Keeps alive what the C++ registry holds a delegate for.
static id<SessionDelegate> heldDelegate = nil;

@implementation Api

- (instancetype)init {
    unimplemented("init()", "KeloAPI.Api");
}

+ (Session *)session:(SessionType)type {
    return wrap(Native::session(nativeType(type)));
}

+ (Session *)session:(SessionType)type delegate:(id<SessionDelegate>)delegate {
    return wrap(Native::session(nativeType(type), sessionDelegate(delegate)));
}

+ (id<SessionDelegate>)sessionDelegate {
    return sessionDelegate(Native::sessionDelegate());
}

+ (void)setSessionDelegate:(id<SessionDelegate>)delegate {
    Native::setSessionDelegate(sessionDelegate(delegate));
    id<SessionDelegate> before = heldDelegate;
    heldDelegate = [delegate retain];
    [before release];
}

@end
