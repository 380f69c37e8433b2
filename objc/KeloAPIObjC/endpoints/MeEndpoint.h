#import <KeloAPIObjC/api/Endpoint.h>
#import <KeloAPIObjC/api/EndpointResult.h>

@class KLWatchUser;

/// What `MeEndpoint` brings.
@interface MeResult : EndpointResult
/// The signed-in user; nil with an error.
@property(nonatomic, readonly) KLWatchUser *user;
@end

/// Reads the signed-in user: GET users/me. At the runtime the class is "KeloAPI.MeEndpoint", and is
/// found by the name "MeEndpoint", too.
@interface MeEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`.
- (instancetype)init;
/// On a session of the caller's choice; nil raises `NSInvalidArgumentException`.
- (instancetype)initWithSession:(Session *)session;

/// `action` takes a `MeResult`. An answer without error and without a user stops the process.
- (void)getWithTarget:(id)target action:(SEL)action;
#if __has_feature(blocks)
- (void)get:(void (^)(MeResult *result))completion;
#endif

@end
