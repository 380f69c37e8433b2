#include <KeloAPI/api/AlamofireEndpointRequest.hpp>
#include <KeloAPI/http/Request.hpp>

#include <cstdint>
#include <utility>

namespace KeloAPI {

EndpointRequest::~EndpointRequest() = default;

AlamofireEndpointRequest::AlamofireEndpointRequest(const std::shared_ptr<Request>& request)
    : _request(request) {}

AlamofireEndpointRequest::~AlamofireEndpointRequest() = default;

std::shared_ptr<AlamofireEndpointRequest>
AlamofireEndpointRequest::create(const std::shared_ptr<Request>& request) {
    std::shared_ptr<AlamofireEndpointRequest> handle(new AlamofireEndpointRequest(request));
    if (request) {
        // The request lets its observer, and with it this handle, go when it has completed.
        request->progress([handle](std::int64_t, std::int64_t total, std::int64_t expected) {
            // A copy, because the handler may replace itself.
            if (const ProgressHandler handler = handle->_progressHandler) {
                handler(*handle, static_cast<double>(total) / static_cast<double>(expected));
            }
        });
    }
    return handle;
}

void AlamofireEndpointRequest::setProgressHandler(ProgressHandler handler) {
    _progressHandler = std::move(handler);
}

void AlamofireEndpointRequest::cancel() {
    if (const auto request = _request.lock()) {
        request->cancel();
    }
}

} // namespace KeloAPI
