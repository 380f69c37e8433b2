#import <KeloAPIObjC/loops/KLVideoUploadProcessingInfo.h>

#include <KeloAPI/model/KLVideoUploadProcessingInfo.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using ProcessingInfo = KeloAPI::KLVideoUploadProcessingInfo;
using ProcessingState = KeloAPI::KLVideoUploadProcessingState;

namespace {

ProcessingState processingState(KLVideoUploadProcessingState state) {
    return requiredCase<ProcessingState>(state, KLVideoUploadProcessingStateFailed,
                                         @"state of processing");
}

} // namespace

@implementation KLVideoUploadProcessingInfo

+ (void)load {
    add<ProcessingInfo>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVideoUploadProcessingInfo");
}

- (instancetype)initWithState:(KLVideoUploadProcessingState)state {
    self = [super init];
    return holdMade(self, [&] { return std::make_shared<ProcessingInfo>(processingState(state)); });
}

+ (NSString *)rawValueOfState:(KLVideoUploadProcessingState)state {
    return string(KeloAPI::rawValue(processingState(state)));
}

+ (BOOL)getState:(KLVideoUploadProcessingState *)state ofRawValue:(NSString *)rawValue {
    const auto known = KeloAPI::videoUploadProcessingStateOf(text(rawValue));
    if (known && state != nullptr) {
        *state = static_cast<KLVideoUploadProcessingState>(*known);
    }
    return known.has_value();
}

- (KLVideoUploadProcessingState)state {
    return static_cast<KLVideoUploadProcessingState>(held<ProcessingInfo>(self).state());
}

- (NSNumber *)checkAfterSeconds {
    return number(held<ProcessingInfo>(self).checkAfterSeconds);
}

- (void)setCheckAfterSeconds:(NSNumber *)checkAfterSeconds {
    held<ProcessingInfo>(self).checkAfterSeconds = optionalDouble(checkAfterSeconds);
}

- (NSNumber *)progressPercent {
    return number(held<ProcessingInfo>(self).progressPercent);
}

- (void)setProgressPercent:(NSNumber *)progressPercent {
    held<ProcessingInfo>(self).progressPercent = optionalDouble(progressPercent);
}

@end
