#import <KeloAPIObjC/api/Endpoint.h>
#import <KeloAPIObjC/api/EndpointResult.h>

/// `UserEndpoint` brings nothing but the news of its success.
@interface UserResult : EndpointResult
@end

/// Acts on one user: POST users/, the user's id and /follow-on-twitter or /unfollow-on-twitter.
@interface UserEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`.
- (instancetype)initWithUserId:(NSString *)userId;
/// On a session of the caller's choice; nil raises `NSInvalidArgumentException`.
- (instancetype)initWithSession:(Session *)session userId:(NSString *)userId;
/// The same with the empty text as the user's id.
- (instancetype)initWithSession:(Session *)session;

@property(nonatomic, readonly) NSString *userId;

/// Switches whether the service follows that user's Twitter account. `action` takes a `UserResult`;
/// the service's codes 230 and 231 count as success.
- (void)setFollowingOnTwitter:(BOOL)following target:(id)target action:(SEL)action;
#if __has_feature(blocks)
- (void)setFollowingOnTwitter:(BOOL)following completion:(void (^)(UserResult *result))completion;
#endif

@end
