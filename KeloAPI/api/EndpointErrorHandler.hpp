#pragma once

#include <KeloAPI/base/URL.hpp>

#include <functional>
#include <memory>

namespace KeloAPI {

class Endpoint;

/// Sends a failed call again, from scratch. Empty where there is nothing to send again.
using EndpointRetry = std::function<void()>;

/// Takes over the failures of an endpoint that the host has to do something about. Called on the
/// main queue, before the call's own completion.
class KELO_API EndpointErrorHandler {
public:
    EndpointErrorHandler() = default;
    EndpointErrorHandler(const EndpointErrorHandler&) = delete;
    EndpointErrorHandler& operator=(const EndpointErrorHandler&) = delete;
    virtual ~EndpointErrorHandler() = default;

    /// The service wants the user to sign in again.
    virtual void endpointRequiresAuth(const std::shared_ptr<Endpoint>& endpoint,
                                      EndpointRetry retry) = 0;
    /// The service wants a captcha solved at `captchaUrl`.
    virtual void endpointRequiresCaptcha(const std::shared_ptr<Endpoint>& endpoint,
                                         const URL& captchaUrl, EndpointRetry retry) = 0;
};

} // namespace KeloAPI
