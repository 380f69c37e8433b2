#import <KeloAPIObjC/api/Endpoint.h>

@class KLVideoUpload;

/// Uploads a long-form video in segments. The host drives it: it initiates an upload session, sends
/// segments in any order, of any size and with the indices it likes, finalizes the session, and
/// asks for the status again after `checkAfterSeconds` until the state is final.
///
/// Actions take the `KLVideoUpload` and the NSError in its place; both are nil where the answer
/// held nothing. Segments of one upload may be under way together where each has an endpoint of its
/// own.
@interface LongformUploadEndpoint : Endpoint

/// On the authenticated session, with `Api.sessionDelegate`.
- (instancetype)init;
/// Not offered: stops the process.
- (instancetype)initWithSession:(Session *)session;

/// POST /upload/longform-videos, with "totalBytes" and the media type "video/mp4" in the query.
- (id<EndpointRequest>)initiateUploadWithTotalBytes:(NSInteger)totalBytes
                                             target:(id)target
                                             action:(SEL)action;
/// PUT /upload/longform-videos/ and the id, with "segmentIndex" in the query and the bytes as the
/// body. `action` takes the NSError, nil without. The handle's progress counts bytes sent.
- (id<EndpointRequest>)uploadSegmentWithMediaId:(NSString *)mediaId
                                           data:(NSData *)data
                                   segmentIndex:(NSInteger)segmentIndex
                                         target:(id)target
                                         action:(SEL)action;
/// POST /upload/longform-videos/ and the id: no segments after this.
- (id<EndpointRequest>)finalizeUploadWithMediaId:(NSString *)mediaId
                                          target:(id)target
                                          action:(SEL)action;
/// GET /upload/longform-videos/, the id and /status.
- (id<EndpointRequest>)checkStatusWithMediaId:(NSString *)mediaId
                                       target:(id)target
                                       action:(SEL)action;

#if __has_feature(blocks)
- (id<EndpointRequest>)initiateUploadWithTotalBytes:(NSInteger)totalBytes
                                         completion:(void (^)(KLVideoUpload *upload,
                                                              NSError *error))completion;
- (id<EndpointRequest>)uploadSegmentWithMediaId:(NSString *)mediaId
                                           data:(NSData *)data
                                   segmentIndex:(NSInteger)segmentIndex
                                     completion:(void (^)(NSError *error))completion;
- (id<EndpointRequest>)finalizeUploadWithMediaId:(NSString *)mediaId
                                      completion:(void (^)(KLVideoUpload *upload,
                                                           NSError *error))completion;
- (id<EndpointRequest>)checkStatusWithMediaId:(NSString *)mediaId
                                   completion:
                                       (void (^)(KLVideoUpload *upload, NSError *error))completion;
#endif

@end
