#pragma once

#include <KeloAPI/base/Date.hpp>

#include <chrono>

namespace KeloAPI {

/// When the stages of a request happened. An instant that was not reached equals the one after it.
struct Timeline {
    /// The request was sent.
    Date requestStartTime;
    /// The first byte of the answer came.
    Date initialResponseTime;
    /// The exchange ended.
    Date requestCompletedTime;
    /// The answer was serialised.
    Date serializationCompletedTime;

    /// From the sending to the first byte of the answer.
    std::chrono::microseconds latency() const { return initialResponseTime - requestStartTime; }
    /// From the sending to the end of the exchange.
    std::chrono::microseconds requestDuration() const {
        return requestCompletedTime - requestStartTime;
    }
    /// From the end of the exchange to the serialised answer.
    std::chrono::microseconds serializationDuration() const {
        return serializationCompletedTime - requestCompletedTime;
    }
    /// From the sending to the serialised answer.
    std::chrono::microseconds totalDuration() const {
        return serializationCompletedTime - requestStartTime;
    }
};

} // namespace KeloAPI
