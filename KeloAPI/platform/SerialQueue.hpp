#pragma once

#include <KeloAPI/platform/Export.hpp>

#include <functional>
#include <memory>
#include <string>

namespace KeloAPI {

/// Runs tasks one after another, in the order they were posted, on a thread of its own that starts
/// with the first task. Usable from any thread. Tasks that are posted already still run when the
/// queue object goes, which may happen inside one of them. Tasks must not throw.
class KELO_API SerialQueue {
public:
    using Task = std::function<void()>;

    /// `label` names the queue's thread in debuggers (its first 15 bytes).
    explicit SerialQueue(std::string label);
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    ~SerialQueue();

    const std::string& label() const;

    void async(Task task);

    /// True inside a task of this queue.
    bool isCurrent() const;

private:
    struct State;
    void startThread();

    std::shared_ptr<State> _state;
};

} // namespace KeloAPI
