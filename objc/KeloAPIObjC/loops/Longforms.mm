#import <KeloAPIObjC/loops/KLEndlessLikesRange.h>
#import <KeloAPIObjC/loops/KLLongform.h>
#import <KeloAPIObjC/loops/KLLongformViews.h>
#import <KeloAPIObjC/loops/KLLoopData.h>
#import <KeloAPIObjC/loops/KLPostProcessStatus.h>
#import <KeloAPIObjC/loops/KLVideoUpload.h>
#import <KeloAPIObjC/loops/KLVideoUploadProcessingInfo.h>

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/KLVideoUploadProcessingInfo.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;
using KeloAPI::LoopData;
using StatusState = KeloAPI::KLPostProcessStatusState;
using ProcessingState = KeloAPI::KLVideoUploadProcessingState;

namespace {

/// GNUstep's archives know signed integers alone: a count from 2^63 on stands there as the negative
/// number of the same bits.
KeloAPI::Number unsignedCount(KeloAPI::Number count) {
    const bool isNegative = count.kind() == KeloAPI::Number::Kind::Signed && count.int64Value() < 0;
    return isNegative ? KeloAPI::Number::of(static_cast<std::uint64_t>(count.int64Value())) : count;
}

/// Null unless count and velocity are there.
std::shared_ptr<LoopData> decodedLoopData(NSCoder *coder) {
    const auto count = decoded<KeloAPI::Number>(coder, @"count");
    const auto velocity = decoded<KeloAPI::Number>(coder, @"velocity");
    return count && velocity ? std::make_shared<LoopData>(unsignedCount(*count), *velocity)
                             : nullptr;
}

} // namespace

@implementation KLLoopData

KELO_STANDS_FOR(KLLoopData, LoopData)
KELO_FIELD(NSNumber *, count, setCount)
KELO_FIELD(NSNumber *, velocity, setVelocity)
KELO_FIELD(NSDate *, created, setCreated)
KELO_FIELD(BOOL, onFire, setOnFire)
KELO_READS(uint64_t, loopsSinceCreation)
KELO_ENCODES(count, velocity, created, onFire)
KELO_DECODES(decodedLoopData(coder), created, onFire)

- (instancetype)init {
    unimplemented("init()", "KeloAPI.LoopData");
}

- (instancetype)initWithCount:(NSNumber *)count velocity:(NSNumber *)velocity {
    return KELO_MAKE(requiredNumber(count, @"count"), requiredNumber(velocity, @"velocity"));
}

- (void)addLoops:(uint64_t)n {
    native(self).addLoops(n);
}

@end

@implementation KLLongform

KELO_STANDS_FOR(KLLongform, KeloAPI::KLLongform)
KELO_NO_INIT()
KELO_READS(NSString *, longformId)
KELO_READS(NSURL *, url)
KELO_READS(double, duration)
KELO_FIELD(double, aspectRatio, setAspectRatio)
KELO_FIELD(NSURL *, thumbnailUrl, setThumbnailUrl)
KELO_FIELD(BOOL, canPreload, setCanPreload)

- (instancetype)initWithLongformId:(NSString *)longformId
                               url:(NSURL *)url
                          duration:(double)duration {
    return KELO_MAKE(text(longformId), requiredURL(url, @"url"), duration);
}

@end

@implementation KLLongformViews

KELO_STANDS_FOR(KLLongformViews, KeloAPI::KLLongformViews)
KELO_NO_INIT()
KELO_READS(NSString *, longformId)
KELO_READS(NSInteger, count)

- (instancetype)initWithLongformId:(NSString *)longformId count:(NSInteger)count {
    return KELO_MAKE(text(longformId), count);
}

@end

@implementation KLEndlessLikesRange

KELO_STANDS_FOR(KLEndlessLikesRange, KeloAPI::KLEndlessLikesRange)
KELO_NO_INIT()
KELO_READS(double, count, startTime, endTime, level)

- (instancetype)initWithCount:(double)count
                        start:(double)start
                          end:(double)end
                        level:(double)level {
    return KELO_MAKE(count, start, end, level);
}

@end

@implementation KLPostProcessStatus

KELO_STANDS_FOR(KLPostProcessStatus, KeloAPI::KLPostProcessStatus)
KELO_NO_INIT()
KELO_READS(KLPostProcessStatusState, state)

- (instancetype)initWithState:(KLPostProcessStatusState)state {
    return KELO_MAKE(
        requiredCase<StatusState>(state, KLPostProcessStatusStateFailed, @"state of a post"));
}

@end

@implementation KLVideoUpload

KELO_STANDS_FOR(KLVideoUpload, KeloAPI::KLVideoUpload)
KELO_NO_INIT()
KELO_READS(NSString *, mediaId)
KELO_FIELD(NSDate *, expireDate, setExpireDate)
KELO_FIELD(KLVideoUploadProcessingInfo *, processingInfo, setProcessingInfo)
KELO_FIELD(NSNumber *, size, setSize)

- (instancetype)initWithMediaId:(NSString *)mediaId {
    return KELO_MAKE(text(mediaId));
}

@end

@implementation KLVideoUploadProcessingInfo

KELO_STANDS_FOR(KLVideoUploadProcessingInfo, KeloAPI::KLVideoUploadProcessingInfo)
KELO_NO_INIT()
KELO_READS(KLVideoUploadProcessingState, state)
KELO_FIELD(NSNumber *, checkAfterSeconds, setCheckAfterSeconds)
KELO_FIELD(NSNumber *, progressPercent, setProgressPercent)

- (instancetype)initWithState:(KLVideoUploadProcessingState)state {
    return KELO_MAKE(requiredCase<ProcessingState>(state, KLVideoUploadProcessingStateFailed,
                                                   @"state of processing"));
}

+ (NSString *)rawValueOfState:(KLVideoUploadProcessingState)state {
    const auto known = optionalCase<ProcessingState>(state, KLVideoUploadProcessingStateFailed);
    return known ? string(KeloAPI::rawValue(*known)) : nil;
}

+ (NSNumber *)stateWithRawValue:(NSString *)rawValue {
    const auto known = KeloAPI::videoUploadProcessingStateOf(text(rawValue));
    return known ? [NSNumber numberWithInteger:static_cast<NSInteger>(*known)] : nil;
}

@end
