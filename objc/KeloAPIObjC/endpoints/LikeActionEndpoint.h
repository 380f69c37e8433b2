#import <KeloAPIObjC/endpoints/PostActionEndpoint.h>

/// Likes and unlikes a post: POST and DELETE posts/, the post's id and /likes. The result's item is
/// a `KLLike`.
@interface LikeActionEndpoint : PostActionEndpoint

/// On the authenticated session, with `Api.sessionDelegate`. A nil post counts as one that has
/// gone.
- (instancetype)initWithPost:(KLWatchPost *)post;
/// Not offered: both stop the process.
- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser;
- (instancetype)initWithSession:(Session *)session;

@end
