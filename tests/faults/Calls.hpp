#pragma once

#include "Rule.hpp"

#include <KeloAPI/base/Error.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace KeloAPI::testing {

/// What a completion was handed.
struct Heard {
    int times = 0;
    /// Every time on the thread of the main queue, and not inside the call.
    bool isInItsPlace = true;
    bool isSending = true;
    std::thread::id mainThread = std::this_thread::get_id();
    std::optional<Error> error;
    /// The text, or what is in the file; empty for other calls, and for a text that is too long to
    /// look at.
    std::string content;

    void hear(const std::optional<Error>& completed);
};

/// A call of an endpoint.
struct Call {
    std::string name;
    CallKind kind;
    /// Sends it anew, over the registry's authenticated session.
    std::function<void(const std::shared_ptr<Heard>&)> send;
};

/// One of each. Files go to the folder for a moment.
std::vector<Call> allCalls(const std::string& folder);

} // namespace KeloAPI::testing
