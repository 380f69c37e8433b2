#import <KeloAPIObjC/endpoints/PostActionEndpoint.h>

/// Reposts a post and takes that back: POST posts/, the post's id and /repost; DELETE the same with
/// a slash and the id of the signed-in user's repost. The result's item is a `KLRekelo`.
@interface RekeloActionEndpoint : PostActionEndpoint

/// On the authenticated session, with `Api.sessionDelegate`. A nil post counts as one that has
/// gone.
- (instancetype)initWithPost:(KLWatchPost *)post;
/// Not offered: both stop the process.
- (instancetype)initWithPost:(KLWatchPost *)post parser:(AnyObjectJsonParser *)parser;
- (instancetype)initWithSession:(Session *)session;

@end
