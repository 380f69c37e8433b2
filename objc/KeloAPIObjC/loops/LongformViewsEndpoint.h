#import <KeloAPIObjC/api/Endpoint.h>

@class KLLongformViews;

/// Reads and reports the views of one long-form video, at /longforms/, its id and /views.
@interface LongformViewsEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`.
- (instancetype)initWithLongformId:(NSString *)longformId;
/// Not offered: stops the process.
- (instancetype)initWithSession:(Session *)session;

/// GET. `action` takes the `KLLongformViews`, nil where the answer held none, and the NSError, nil
/// without.
- (id<EndpointRequest>)fetchViewsWithTarget:(id)target action:(SEL)action;
/// POST, with a JSON body whose one key is "timestamp": the instant of the call in seconds since
/// 1970, as text. `action` takes the NSError, nil without.
- (id<EndpointRequest>)submitViewWithTarget:(id)target action:(SEL)action;

#if __has_feature(blocks)
- (id<EndpointRequest>)fetchViewsWithCompletion:(void (^)(KLLongformViews *views,
                                                          NSError *error))completion;
- (id<EndpointRequest>)submitViewWithCompletion:(void (^)(NSError *error))completion;
#endif

@end
