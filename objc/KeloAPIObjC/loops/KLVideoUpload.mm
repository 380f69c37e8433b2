#import <KeloAPIObjC/loops/KLVideoUpload.h>

#import <KeloAPIObjC/loops/KLVideoUploadProcessingInfo.h>

#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using VideoUpload = KeloAPI::KLVideoUpload;

@implementation KLVideoUpload

+ (void)load {
    add<VideoUpload>(self);
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.KLVideoUpload");
}

- (instancetype)initWithMediaId:(NSString *)mediaId {
    self = [super init];
    return self == nil ? nil : hold(self, std::make_shared<VideoUpload>(text(mediaId)));
}

- (NSString *)mediaId {
    return string(held<VideoUpload>(self).mediaId());
}

- (NSDate *)expireDate {
    return date(held<VideoUpload>(self).expireDate);
}

- (void)setExpireDate:(NSDate *)expireDate {
    held<VideoUpload>(self).expireDate = optionalDate(expireDate);
}

- (KLVideoUploadProcessingInfo *)processingInfo {
    return wrap(held<VideoUpload>(self).processingInfo);
}

- (void)setProcessingInfo:(KLVideoUploadProcessingInfo *)processingInfo {
    held<VideoUpload>(self).processingInfo =
        shared<KeloAPI::KLVideoUploadProcessingInfo>(processingInfo);
}

- (NSNumber *)size {
    return number(held<VideoUpload>(self).size);
}

- (void)setSize:(NSNumber *)size {
    held<VideoUpload>(self).size = optionalInteger(size);
}

@end
