#include <KeloAPI/api/AlamofireEndpointRequest.hpp>
#include <KeloAPI/http/Request.hpp>

#include <cstdint>

namespace KeloAPI {

std::shared_ptr<AlamofireEndpointRequest>
AlamofireEndpointRequest::create(const std::shared_ptr<Request>& request) {
    std::shared_ptr<AlamofireEndpointRequest> handle(new AlamofireEndpointRequest(request));
    if (request) {
        request->keep(handle);
    }
    return handle;
}

void AlamofireEndpointRequest::setProgressHandler(ProgressHandler handler) {
    _progressHandler = std::move(handler);
    const auto request = _request.lock();
    if (_isObserving || !_progressHandler || !request) {
        return;
    }
    // Only now: a call that nobody watches does not wake the main thread for each run of bytes.
    // The request lets its observer go before the handle.
    _isObserving = true;
    request->progress([this](std::int64_t, std::int64_t total, std::int64_t expected) {
        // A copy, because the handler may replace itself.
        if (const ProgressHandler current = _progressHandler) {
            current(*this, static_cast<double>(total) / static_cast<double>(expected));
        }
    });
}

void AlamofireEndpointRequest::cancel() {
    if (const auto request = _request.lock()) {
        request->cancel();
    }
}

} // namespace KeloAPI
