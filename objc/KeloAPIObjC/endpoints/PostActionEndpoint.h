#import <KeloAPIObjC/api/Endpoint.h>
#import <KeloAPIObjC/api/EndpointResult.h>

@class KLWatchPost;

/// What an action on a post brings.
@interface PostActionResult : EndpointResult
/// The first item of the answer, of the class that the action's endpoint tells; nil when the answer
/// held none, and with an error.
@property(nonatomic, readonly) id item;
@end

/// Does something to a post, or takes it back; the answer is parsed by a parser. Does not keep the
/// C++ library's post alive, and does not change it: that is the host's business after a success.
@interface PostActionEndpoint : Endpoint

/// An endpoint without a path of its own, on the authenticated session with `Api.sessionDelegate`.
/// A nil parser raises `NSInvalidArgumentException`; a nil post counts as one that has gone.
- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser;
/// Not offered: stops the process.
- (instancetype)initWithSession:(Session *)session;

/// Nil when the post has gone.
@property(nonatomic, readonly) KLWatchPost *post;

/// Composes `path` for doing or taking back. Leaves it as it was where the post has gone or lacks
/// an identifier that the path needs; the base does so always. A derived class overrides this, and
/// each toggle asks it.
- (void)setPathForOn:(BOOL)on;

/// POST to do it, DELETE to take it back; `action` takes a `PostActionResult`. Where the path is
/// left as it was, the request goes there.
- (void)toggleOn:(BOOL)on target:(id)target action:(SEL)action;
#if __has_feature(blocks)
- (void)toggleOn:(BOOL)on completion:(void (^)(PostActionResult *result))completion;
#endif

@end
