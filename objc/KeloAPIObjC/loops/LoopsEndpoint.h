#import <KeloAPIObjC/api/Endpoint.h>

@class KLWatchPost;

/// Reports how often a post's video has looped on this device: POST loops, with a JSON body.
@interface LoopsEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`.
- (instancetype)init;
/// Not offered: stops the process.
- (instancetype)initWithSession:(Session *)session;

/// Sends one record and forgets it: the outcome is one diagnostic line, there is no retry and no
/// handle. `count` is sent as given. A post without an identifier sends nothing; nil raises
/// `NSInvalidArgumentException`.
- (void)submitWithCount:(NSInteger)count post:(KLWatchPost *)post;

@end
