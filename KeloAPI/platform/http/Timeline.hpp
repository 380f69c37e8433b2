#pragma once

#include <KeloAPI/platform/Date.hpp>

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

    std::chrono::microseconds latency() const { return initialResponseTime - requestStartTime; }
    std::chrono::microseconds requestDuration() const {
        return requestCompletedTime - requestStartTime;
    }
    std::chrono::microseconds serializationDuration() const {
        return serializationCompletedTime - requestCompletedTime;
    }
    std::chrono::microseconds totalDuration() const {
        return serializationCompletedTime - requestStartTime;
    }
};

} // namespace KeloAPI
