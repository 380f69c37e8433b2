#pragma once

#include <KeloAPI/base/Object.hpp>

#include <functional>

namespace KeloAPI {

/// The handle of a call under way. Kept beyond the call's end, it keeps nothing of the response.
class KELO_API EndpointRequest : public Object {
public:
    /// Takes the handle and the fraction done: moved bytes divided by expected bytes, without any
    /// check. An unknown total makes it negative, an empty one infinite or not-a-number.
    using ProgressHandler = std::function<void(EndpointRequest& request, double fraction)>;

    /// Called on the main queue as bytes move; looked up at every report, so it may be set while
    /// the call is under way. Empty by default. On the main queue's thread.
    virtual const ProgressHandler& progressHandler() const = 0;
    /// Replaces the handler; an empty one ends the reports.
    virtual void setProgressHandler(ProgressHandler handler) = 0;

    /// Ends the call: its completion hears of `HTTPErrorCode::Cancelled`, once and asynchronously.
    /// After the end it does nothing. From any thread.
    virtual void cancel() = 0;
};

} // namespace KeloAPI
