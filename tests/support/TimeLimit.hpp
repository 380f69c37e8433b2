#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace KeloAPI::testing {

/// How long a test waits for what has to come: far longer than a busy machine takes for it.
inline constexpr std::chrono::seconds timeLimit(20);

/// Waits for what no event tells of, such as another process's file. False when it does not come.
inline bool eventually(const std::function<bool()>& happened) {
    const auto end = std::chrono::steady_clock::now() + timeLimit;
    while (!happened()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace KeloAPI::testing
