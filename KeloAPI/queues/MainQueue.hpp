#pragma once

#include <KeloAPI/base/Export.hpp>

#include <chrono>
#include <cstddef>
#include <functional>

namespace KeloAPI {

/// The queue on which the library delivers every completion and progress report, in order. The
/// library has no loop of its own: the host lets the queue's tasks run, on the one thread that it
/// treats as its main thread, in one of four ways.
///
/// - `run()` blocks and runs tasks until `stop()`: command-line hosts.
/// - `drain()` runs what is waiting and returns: hosts with a frame or poll loop.
/// - `fileDescriptor()` becomes readable while tasks wait; watch it in a poll, GLib or Qt loop and
///   call `drain()`.
/// - `setExecutor()` hands every task to the host's own "run this on the main thread" function.
///
/// Tasks never run inside the call that posted them, nor inside another task: a `drain()`, `run()`
/// or `runUntil()` from within a task runs nothing and returns at once. Tasks, and what they call
/// of the host's (completions, delegates), must not throw: that ends the process.
class KELO_API MainQueue {
public:
    using Task = std::function<void()>; ///< What the queue runs. Must not throw.
    /// Hands a task to the host's main thread; called on any thread.
    using Executor = std::function<void(Task)>;

    /// The process's one main queue.
    static MainQueue& main();

    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    /// Posts a task. From any thread.
    void async(Task task);

    /// Runs the tasks that are waiting now and returns how many those were. Tasks that they post
    /// wait for the next call.
    std::size_t drain();

    /// Runs tasks as they come, until `stop()`.
    void run();

    /// Runs tasks as they come until `done` says true, which is asked after each batch, or until
    /// `timeout` has passed or `stop()` was called; returns what `done` said last.
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

    /// Makes `run()` return after the task that is running; those behind it go on waiting. From any
    /// thread; where nothing runs, the next `run()` returns at once.
    void stop();

    /// Readable while tasks wait. Owned by the queue: watch it, do not read or close it.
    int fileDescriptor();

    /// Hands tasks to `executor` from now on, and those that wait at once; an empty one restores
    /// the queue's own list. The executor is called on the posting thread and must not run the task
    /// inside that call.
    void setExecutor(Executor executor);

private:
    template <class T>
    friend class NeverDestroyed;
    MainQueue();
    ~MainQueue() = delete;

    std::size_t runWaiting(bool untilStopped);
    bool waitForTasks(std::chrono::steady_clock::time_point deadline);
    bool takesPart();
    bool wasStopped();

    struct State;
    State* _state;
};

} // namespace KeloAPI
