#import <KeloAPIObjC/api/Endpoint.h>
#import <KeloAPIObjC/api/EndpointResult.h>

@class TimelineEndpoint;

/// One page of a timeline, and the way to the pages beside it.
@interface TimelineResult : EndpointResult {
@private
    TimelineEndpoint *_nextPage;
    TimelineEndpoint *_previousPage;
}

- (instancetype)initWithPosts:(NSArray *)posts
                     nextPage:(TimelineEndpoint *)nextPage
                 previousPage:(TimelineEndpoint *)previousPage;

/// `KLWatchPost` objects; nil with an error.
@property(nonatomic, readonly) NSArray *posts;
/// Nil where there is no such page.
@property(nonatomic, readonly) TimelineEndpoint *nextPage;
@property(nonatomic, readonly) TimelineEndpoint *previousPage;

@end

/// Reads one page of a timeline: GET timelines/ and the feed's path, with the parameters "c_max",
/// "c_overflow", "l_max", "l_overflow" and "size" (5 records unless changed).
@interface TimelineEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`. A path that holds "timelines/"
/// anywhere is complete; any other is put behind it.
- (instancetype)initWithPath:(NSString *)path;
/// Without a path and without parameters, on a session of the caller's choice; nil raises
/// `NSInvalidArgumentException`.
- (instancetype)initWithSession:(Session *)session;

/// Sends the request; may be called again. `action` takes a `TimelineResult`, whose endpoints have
/// the default parameters and the paging ones; what else was added here is not carried over.
- (void)fetchWithTarget:(id)target action:(SEL)action;
#if __has_feature(blocks)
- (void)fetch:(void (^)(TimelineResult *result))completion;
#endif

@end
