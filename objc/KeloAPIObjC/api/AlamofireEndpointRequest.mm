#import <KeloAPIObjC/api/AlamofireEndpointRequest.h>

#include <KeloAPI/api/AlamofireEndpointRequest.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;
using Native = KeloAPI::AlamofireEndpointRequest;

namespace {

struct Progress {
    Completion heard;
    std::weak_ptr<KeloAPI::EndpointRequest> handle;

    void operator()(KeloAPI::EndpointRequest &, double fraction) const {
        inPool([&] { heard(toObjC(handle.lock()), fraction); });
    }
};

void setProgress(AlamofireEndpointRequest *request, const Completion &heard) {
    const auto handle = toNative<Native>(request);
    if (heard) {
        handle->setProgressHandler(Progress{heard, handle});
    } else {
        handle->setProgressHandler(nullptr);
    }
}

} // namespace

@implementation AlamofireEndpointRequest

KELO_STANDS_FOR(AlamofireEndpointRequest, Native)
KELO_CALLS(void, (), setProgressTarget, setProgressHandler, setProgress(self, heard))

- (instancetype)init {
    return adoptMade(self, [] { return Native::create(nullptr); });
}

- (id)progressHandler {
    const auto *progress = native(self).progressHandler().target<Progress>();
    return progress == nullptr ? nil : progress->heard.block();
}

- (void)cancel {
    native(self).cancel();
}

@end
