#import <KeloAPIObjC/api/EndpointErrorHandler.h>
#import <KeloAPIObjC/api/SessionDelegate.h>
#import <KeloAPIObjC/bridge/KLBridged.h>

/// Whether a session's requests act for a signed-in user.
typedef NS_ENUM(NSInteger, SessionType) {
    SessionTypeAuthenticated = 0,
    SessionTypeUnAuthenticated = 1,
};

/// One API session: where the service is, what identifies its requests, and the calls that wait for
/// the host to sign in again or to solve a captcha. What it tells comes from its delegate, anew at
/// each call, or is the default given below. At the runtime the class is "KeloAPI.Session", and is
/// found by the name "Session", too.
@interface Session : KLBridged <EndpointErrorHandler>

/// The server of the host that the session has when it first sends is pinned. Always YES.
+ (BOOL)certificatePinningEnabled;

/// A session outside the registry of `Api`.
- (instancetype)initWithSessionType:(SessionType)sessionType;
/// Not offered: stops the process.
- (instancetype)init;

/// As the session was made; does not change.
@property(nonatomic, readonly) SessionType sessionType;
/// Not kept alive: nil when there is none or it has gone. A delegate in C++ is told as nil.
@property(nonatomic, assign) id<SessionDelegate> delegate;
/// The service's host; by default the built-in one.
@property(nonatomic, readonly) NSString *host;
/// The scheme with "://"; by default "https://".
@property(nonatomic, readonly) NSString *schema;
/// Session key of the signed-in user; by default nil.
@property(nonatomic, readonly) NSString *sessionId;
/// Sent as "Accept-Language"; by default nil.
@property(nonatomic, readonly) NSString *acceptLanguage;
/// Sent as "User-Agent"; by default nil.
@property(nonatomic, readonly) NSString *userAgent;
/// The client's identification, sent as "X-Kelo-Client"; by default nil.
@property(nonatomic, readonly) NSString *keloClient;
/// Whether requests are background polls; by default NO.
@property(nonatomic, readonly) BOOL polling;

/// From now on the session's host must show one of these certificates, each an `NSData` in PEM or
/// DER form, in place of those that are built into the library. An empty array refuses every
/// server; what is not a certificate raises `NSInvalidArgumentException`. Calls that are under way
/// are cancelled.
- (void)pinCertificates:(NSArray *)certificates;

/// Ends the wait of the queued retries: YES sends each again, oldest first; NO drops them. On the
/// main queue's thread.
- (void)handleQueuedRetriesWithShouldRetry:(BOOL)shouldRetry;

@end
