#pragma once

#include "TimeLimit.hpp"

#include <KeloAPI/queues/MainQueue.hpp>

#include <functional>

namespace KeloAPI::testing {

/// Runs the main queue until `done` says true; false when that takes too long. In short slices,
/// because what a test waits for may come about on another thread, with no task to tell of it.
inline bool runUntil(const std::function<bool()>& done,
                     std::chrono::milliseconds timeout = timeLimit) {
    constexpr std::chrono::milliseconds slice(5);
    for (auto waited = std::chrono::milliseconds(0); waited < timeout; waited += slice) {
        if (MainQueue::main().runUntil(done, slice)) {
            return true;
        }
    }
    return done();
}

/// Runs the main queue for a while, to see that nothing more comes.
inline void runFor(std::chrono::milliseconds time) {
    MainQueue::main().runUntil([] { return false; }, time);
}

} // namespace KeloAPI::testing
