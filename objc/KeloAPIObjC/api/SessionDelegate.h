#import <Foundation/Foundation.h>

@class Session;

/// What a host tells its sessions about the service, the user and the device, and what it hears of
/// them. A session asks anew for every request and keeps nothing. The first seven methods are
/// called on the thread that sends, the last two on the main queue. A text may be nil. All methods
/// are required: the call that misses one raises `NSInvalidArgumentException`, which names the
/// delegate's class and the method. What a delegate raises arrives where the host called the
/// library; on the main queue it ends the process.
@protocol SessionDelegate <NSObject>
/// Host of the service, with a port where it is not the scheme's own; nil for the built-in one.
- (NSString *)hostForSession:(Session *)session;
/// Scheme with "://"; nil for "https://".
- (NSString *)schemaForSession:(Session *)session;
/// Session key of the signed-in user; nil when nobody is signed in.
- (NSString *)sessionKeyForSession:(Session *)session;
/// Value of "Accept-Language"; nil to send none.
- (NSString *)acceptLanguageForSession:(Session *)session;
/// Value of "User-Agent"; nil to send none.
- (NSString *)userAgentForSession:(Session *)session;
/// Value of "X-Kelo-Client", the client's identification; nil to send none.
- (NSString *)keloClientForSession:(Session *)session;
/// Whether the request is a background poll rather than something the user did.
- (BOOL)isPollingForSession:(Session *)session;

/// The user must sign in again. Once that is settled, send `handleQueuedRetriesWithShouldRetry:`.
- (void)reauthRequiredForSession:(Session *)session;
/// The service demands that a captcha be solved at `captchaUrl`. YES promises to present it and to
/// send `handleQueuedRetriesWithShouldRetry:` afterwards.
- (BOOL)shouldHandleCaptchaForSession:(Session *)session captchaUrl:(NSURL *)captchaUrl;
@end
