#import <KeloAPIObjC/api/Endpoint.h>

/// Reads the sounds that users can put into their videos: GET /soundboard.
@interface SoundboardEndpoint : Endpoint

/// On a session of the caller's choice; nil raises `NSInvalidArgumentException`.
- (instancetype)initWithSession:(Session *)session;

/// `action` takes the sounds (an NSArray of `SoundboardSound`, empty with an error) and the
/// NSError, nil without.
- (id<EndpointRequest>)fetchSoundsWithTarget:(id)target action:(SEL)action;
#if __has_feature(blocks)
- (id<EndpointRequest>)fetchSoundsWithCompletion:(void (^)(NSArray *sounds,
                                                           NSError *error))completion;
#endif

@end
