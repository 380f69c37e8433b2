#import <KeloAPIObjC/loops/LongformUploadEndpoint.h>

#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Bytes.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::LongformUploadEndpoint;

static Native::Completion uploadCompletion(const Completion &heard) {
    return [heard](const std::shared_ptr<KeloAPI::KLVideoUpload> &upload,
                   const std::optional<KeloAPI::Error> &failure) {
        const Pool pool;
        heard(wrap(upload), error(failure));
    };
}

@implementation LongformUploadEndpoint

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    return hold(self, makeEndpoint<Native>());
}

- (instancetype)initWithSession:(Session *)session {
    unimplemented("init(session:)", "KeloAPI.LongformUploadEndpoint");
}

- (id<EndpointRequest>)initiateUploadWithTotalBytes:(NSInteger)totalBytes
                                             target:(id)target
                                             action:(SEL)action {
    return wrap(held<Native>(self).initiateUpload(totalBytes,
                                                  uploadCompletion(Completion(target, action))));
}

- (id<EndpointRequest>)initiateUploadWithTotalBytes:(NSInteger)totalBytes
                                         completion:
                                             (KELO_BLOCK(KLVideoUpload *, NSError *))completion {
    return wrap(
        held<Native>(self).initiateUpload(totalBytes, uploadCompletion(Completion(completion))));
}

- (id<EndpointRequest>)uploadSegmentWithMediaId:(NSString *)mediaId
                                           data:(NSData *)data
                                   segmentIndex:(NSInteger)segmentIndex
                                         target:(id)target
                                         action:(SEL)action {
    return wrap(held<Native>(self).uploadSegment(text(mediaId), bytes(data), segmentIndex,
                                                 errorCompletion(Completion(target, action))));
}

- (id<EndpointRequest>)uploadSegmentWithMediaId:(NSString *)mediaId
                                           data:(NSData *)data
                                   segmentIndex:(NSInteger)segmentIndex
                                     completion:(KELO_BLOCK(NSError *))completion {
    return wrap(held<Native>(self).uploadSegment(text(mediaId), bytes(data), segmentIndex,
                                                 errorCompletion(Completion(completion))));
}

- (id<EndpointRequest>)finalizeUploadWithMediaId:(NSString *)mediaId
                                          target:(id)target
                                          action:(SEL)action {
    return wrap(held<Native>(self).finalizeUpload(text(mediaId),
                                                  uploadCompletion(Completion(target, action))));
}

- (id<EndpointRequest>)finalizeUploadWithMediaId:(NSString *)mediaId
                                      completion:
                                          (KELO_BLOCK(KLVideoUpload *, NSError *))completion {
    return wrap(
        held<Native>(self).finalizeUpload(text(mediaId), uploadCompletion(Completion(completion))));
}

- (id<EndpointRequest>)checkStatusWithMediaId:(NSString *)mediaId
                                       target:(id)target
                                       action:(SEL)action {
    return wrap(held<Native>(self).checkStatus(text(mediaId),
                                               uploadCompletion(Completion(target, action))));
}

- (id<EndpointRequest>)checkStatusWithMediaId:(NSString *)mediaId
                                   completion:(KELO_BLOCK(KLVideoUpload *, NSError *))completion {
    return wrap(
        held<Native>(self).checkStatus(text(mediaId), uploadCompletion(Completion(completion))));
}

@end
