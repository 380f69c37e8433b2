#pragma once

#include <KeloAPI/api/EndpointRequest.hpp>

#include <memory>
#include <utility>

namespace KeloAPI {

class Request;

/// The handle of a call that the HTTP layer carries. It lives as long as its request is under way
/// even where nobody holds it.
class KELO_API AlamofireEndpointRequest final : public EndpointRequest {
public:
    /// A handle of `request`, which may be null.
    static std::shared_ptr<AlamofireEndpointRequest>
    create(const std::shared_ptr<Request>& request);

    const ProgressHandler& progressHandler() const override { return _progressHandler; }
    void setProgressHandler(ProgressHandler handler) override;
    void cancel() override;

private:
    explicit AlamofireEndpointRequest(const std::shared_ptr<Request>& request)
        : _request(request) {}

    ProgressHandler _progressHandler;
    bool _isObserving = false;
    /// Lives by itself until it has completed; whoever keeps the handle does not keep the response.
    const std::weak_ptr<Request> _request;
};

} // namespace KeloAPI
