#import <KeloAPIObjC/bridge/KLBlocks.h>

@class Endpoint;

/// Sends a failed call again, from scratch.
#if __has_feature(blocks)
typedef void (^EndpointRetry)(void);
#else
typedef id EndpointRetry;
#endif

/// Takes over the failures of an endpoint that the host has to do something about. On the main
/// queue's thread.
@protocol EndpointErrorHandler <NSObject>

/// The service wants the user to sign in again. Queues the retry, if any, and tells the delegate.
- (void)endpointRequiresAuth:(Endpoint *)endpoint retry:(EndpointRetry)retry;
/// The same with the action of `target`, which takes nothing, as the retry; none for a nil target.
- (void)endpointRequiresAuth:(Endpoint *)endpoint retryTarget:(id)target action:(SEL)action;

/// The service wants a captcha solved at `captchaUrl`. Asks the delegate, and queues the retry, if
/// any, when the answer is YES.
- (void)endpointRequiresCaptcha:(Endpoint *)endpoint
                     captchaUrl:(NSURL *)captchaUrl
                          retry:(EndpointRetry)retry;
/// The same with the action of `target`, which takes nothing, as the retry; none for a nil target.
- (void)endpointRequiresCaptcha:(Endpoint *)endpoint
                     captchaUrl:(NSURL *)captchaUrl
                    retryTarget:(id)target
                         action:(SEL)action;

@end
