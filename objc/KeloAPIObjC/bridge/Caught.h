#import <Foundation/Foundation.h>

// In plain Objective-C, because GCC's Objective-C++ cannot get hold of a caught exception.

#ifdef __cplusplus
extern "C" {
#endif

/// What the call raises; nil when it raises nothing.
NSException *KLCaught(void (*call)(void *context), void *context);

/// Calls in an autorelease pool of its own. What the call raises is kept, the pool drained, and
/// then it is raised again.
void KLInPool(void (*call)(void *context), void *context);

#ifdef __cplusplus
}
#endif
