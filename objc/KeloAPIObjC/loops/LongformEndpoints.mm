#import <KeloAPIObjC/loops/LongformUploadEndpoint.h>
#import <KeloAPIObjC/loops/LongformViewsEndpoint.h>
#import <KeloAPIObjC/loops/LoopsEndpoint.h>

#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPIObjC/bridge/Bytes.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/HostEndpoint.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;

@implementation LongformUploadEndpoint

KELO_STANDS_FOR(LongformUploadEndpoint, KeloAPI::LongformUploadEndpoint)
KELO_REFUSES("init(session:)", initWithSession, Session *, session)

- (instancetype)init {
    return KELO_MAKE_ENDPOINT();
}

KELO_CALLS(id<EndpointRequest>, (initiateUploadWithTotalBytes, NSInteger, totalBytes), target,
           completion, toObjC(native(self).initiateUpload(totalBytes, Telling{heard})))
KELO_CALLS(id<EndpointRequest>,
           (uploadSegmentWithMediaId, NSString *, mediaId, data, NSData *, data, segmentIndex,
            NSInteger, segmentIndex),
           target, completion,
           toObjC(native(self).uploadSegment(text(mediaId), bytes(data), segmentIndex,
                                             Telling{heard})))
KELO_CALLS(id<EndpointRequest>, (finalizeUploadWithMediaId, NSString *, mediaId), target,
           completion, toObjC(native(self).finalizeUpload(text(mediaId), Telling{heard})))
KELO_CALLS(id<EndpointRequest>, (checkStatusWithMediaId, NSString *, mediaId), target, completion,
           toObjC(native(self).checkStatus(text(mediaId), Telling{heard})))

@end

@implementation LongformViewsEndpoint

KELO_STANDS_FOR(LongformViewsEndpoint, KeloAPI::LongformViewsEndpoint)
KELO_REFUSES("init(session:)", initWithSession, Session *, session)

- (instancetype)initWithLongformId:(NSString *)longformId {
    return KELO_MAKE_ENDPOINT(text(longformId));
}

KELO_CALLS(id<EndpointRequest>, (), fetchViewsWithTarget, fetchViewsWithCompletion,
           toObjC(native(self).fetchViews(Telling{heard})))
KELO_CALLS(id<EndpointRequest>, (), submitViewWithTarget, submitViewWithCompletion,
           toObjC(native(self).submitView(Telling{heard})))

@end

@implementation LoopsEndpoint

KELO_STANDS_FOR(LoopsEndpoint, KeloAPI::LoopsEndpoint)
KELO_REFUSES("init(session:)", initWithSession, Session *, session)

- (instancetype)init {
    return KELO_MAKE_ENDPOINT();
}

- (void)submitWithCount:(NSInteger)count post:(KLWatchPost *)post {
    native(self).submit(count, required<KeloAPI::KLWatchPost>(post, @"post"));
}

@end
