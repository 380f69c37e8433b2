#import <KeloAPIObjC/loops/LoopsParsers.h>

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPIObjC/bridge/NativeParser.hpp>

using namespace KeloBridge;

@implementation LoopDataParser

+ (void)load {
    addParser<KeloAPI::LoopDataParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::LoopDataParser>(self);
}

@end

@implementation KLLongformParser

+ (void)load {
    addParser<KeloAPI::KLLongformParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLLongformParser>(self);
}

@end

@implementation KLLongformViewsParser

+ (void)load {
    addParser<KeloAPI::KLLongformViewsParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLLongformViewsParser>(self);
}

@end

@implementation KLEndlessLikesRangeParser

+ (void)load {
    addParser<KeloAPI::KLEndlessLikesRangeParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLEndlessLikesRangeParser>(self);
}

@end

@implementation KLPostProcessStatusParser

+ (void)load {
    addParser<KeloAPI::KLPostProcessStatusParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLPostProcessStatusParser>(self);
}

@end

@implementation KLVideoUploadParser

+ (void)load {
    addParser<KeloAPI::KLVideoUploadParser>(self);
}

- (instancetype)init {
    return holdParser<KeloAPI::KLVideoUploadParser>(self);
}

@end
