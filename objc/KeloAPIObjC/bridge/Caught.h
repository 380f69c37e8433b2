#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// What the call raises; nil when it raises nothing. In plain Objective-C, because GCC's
/// Objective-C++ cannot get hold of a caught exception.
NSException *KLCaught(void (*call)(void *context), void *context);

#ifdef __cplusplus
}
#endif
