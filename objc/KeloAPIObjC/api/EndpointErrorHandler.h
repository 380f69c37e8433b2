#import <KeloAPIObjC/bridge/KLBlocks.h>

@class Endpoint;

#if __has_feature(blocks)
/// Sends a failed call again, from scratch.
typedef void (^EndpointRetry)(void);
#endif

/// Takes over the failures of an endpoint that the host has to do something about. On the main
/// queue's thread.
@protocol EndpointErrorHandler <NSObject>

/// The service wants the user to sign in again. Queues the action of `target`, which takes nothing,
/// as the retry, and tells the delegate; a nil target is no retry.
- (void)endpointRequiresAuth:(Endpoint *)endpoint retryTarget:(id)target action:(SEL)action;
/// The service wants a captcha solved at `captchaUrl`. Asks the delegate, and queues the retry, if
/// any, when the answer is YES.
- (void)endpointRequiresCaptcha:(Endpoint *)endpoint
                     captchaUrl:(NSURL *)captchaUrl
                    retryTarget:(id)target
                         action:(SEL)action;

#if __has_feature(blocks)
- (void)endpointRequiresAuth:(Endpoint *)endpoint retry:(EndpointRetry)retry;
- (void)endpointRequiresCaptcha:(Endpoint *)endpoint
                     captchaUrl:(NSURL *)captchaUrl
                          retry:(EndpointRetry)retry;
#endif

@end
