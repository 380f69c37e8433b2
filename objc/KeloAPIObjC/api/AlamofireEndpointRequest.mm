#import <KeloAPIObjC/api/AlamofireEndpointRequest.h>

#include <KeloAPI/api/AlamofireEndpointRequest.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>

using namespace KeloBridge;
using Native = KeloAPI::AlamofireEndpointRequest;

namespace {

struct Progress {
    Completion heard;
    std::weak_ptr<KeloAPI::EndpointRequest> handle;

    void operator()(KeloAPI::EndpointRequest &, double fraction) const {
        const Pool pool;
        heard(wrap(handle.lock()), fraction);
    }
};

void setProgress(AlamofireEndpointRequest *request, const Completion &heard) {
    const auto handle = sharedAlone<Native>(request);
    if (heard) {
        handle->setProgressHandler(Progress{heard, handle});
    } else {
        handle->setProgressHandler(nullptr);
    }
}

} // namespace

@implementation AlamofireEndpointRequest

+ (void)load {
    add<Native>(self);
}

- (instancetype)init {
    self = [super init];
    return self == nil ? nil : hold(self, Native::create(nullptr));
}

- (void)setProgressTarget:(id)target action:(SEL)action {
    setProgress(self, Completion(target, action));
}

- (void)setProgressHandler:(KELO_BLOCK(id<EndpointRequest>, double))progressHandler {
    setProgress(self, Completion(progressHandler));
}

- (KELO_BLOCK(id<EndpointRequest>, double))progressHandler {
    const auto *progress = held<Native>(self).progressHandler().target<Progress>();
    return progress == nullptr ? nil : progress->heard.block();
}

- (void)cancel {
    held<Native>(self).cancel();
}

@end
