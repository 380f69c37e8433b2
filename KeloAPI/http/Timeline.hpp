#pragma once

#include <KeloAPI/base/Date.hpp>

#include <chrono>

namespace KeloAPI {

/// When the stages of a request happened. An instant that was not reached equals the one after it.
struct Timeline {
    /// The request was sent.
    Date requestStartTime;
    /// The first byte of the response came.
    Date initialResponseTime;
    /// The exchange ended.
    Date requestCompletedTime;
    /// The response was serialised.
    Date serializationCompletedTime;

    /// From the sending to the first byte of the response.
    std::chrono::microseconds latency() const { return initialResponseTime - requestStartTime; }
    /// From the sending to the end of the exchange.
    std::chrono::microseconds requestDuration() const {
        return requestCompletedTime - requestStartTime;
    }
    /// From the end of the exchange to the serialised response.
    std::chrono::microseconds serializationDuration() const {
        return serializationCompletedTime - requestCompletedTime;
    }
    /// From the sending to the serialised response.
    std::chrono::microseconds totalDuration() const {
        return serializationCompletedTime - requestStartTime;
    }
};

} // namespace KeloAPI
