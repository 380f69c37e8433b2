#pragma once

#include <KeloAPI/base/Export.hpp>

#include <functional>
#include <memory>
#include <string>

namespace KeloAPI {

/// Runs tasks one after another, in the order they were posted, on a thread of its own that starts
/// with the first task. Usable from any thread. Tasks that are posted already still run when the
/// queue object goes, which may happen inside one of them. Tasks must not throw.
///
/// While the system has no thread to give, tasks wait, and each further post asks it again. In a
/// forked child the queues of its parent have no thread: what is posted there never runs.
class KELO_API SerialQueue {
public:
    using Task = std::function<void()>; ///< What the queue runs. Must not throw.

    /// `label` names the queue's thread in debuggers (its first 15 bytes).
    explicit SerialQueue(std::string label);
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    ~SerialQueue();

    const std::string& label() const; ///< As given.

    void async(Task task); ///< Posts a task, which runs behind those that were posted before.

    /// As `async`; the task runs on the main queue where this one has no thread.
    void asyncOrOnMain(Task task);

    /// Starts the thread ahead of the first task, unless it runs. False when there is none to be
    /// had.
    bool open();

    /// True in a forked child, of the process that made the queue or of a child of that.
    bool isInherited() const;

    /// True inside a task of this queue.
    bool isCurrent() const;

private:
    struct State;
    bool enter(Task& task, bool mayWaitForThread);
    bool startThread();

    std::shared_ptr<State> _state;
};

} // namespace KeloAPI
