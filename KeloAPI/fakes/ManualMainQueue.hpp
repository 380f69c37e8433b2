#pragma once

#include <KeloAPI/base/Export.hpp>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace KeloAPI::fakes {

/// A main queue whose tasks a test runs one by one. While it exists, it gets all that the library
/// posts to `MainQueue::main()`, what waits there already included: each completion and progress
/// report is a task, and so is some tidying up behind them.
///
/// Tasks come from other threads. The functions below that wait for them do so in real time, so
/// that a test cannot hang. They are called on the thread of the test; inside a task they run
/// nothing. There may be one at a time: a second one stops the process.
class KELO_API ManualMainQueue {
public:
    /// Takes the place of an executor that was set.
    ManualMainQueue();
    ManualMainQueue(const ManualMainQueue&) = delete;
    ManualMainQueue& operator=(const ManualMainQueue&) = delete;
    /// What waits goes to `MainQueue::main()`, which keeps its own list again.
    ~ManualMainQueue();

    /// How many tasks wait now.
    std::size_t waitingCount() const;

    /// Runs the oldest task, and waits for it if need be. False where none comes in time.
    bool runNext(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    /// Runs the tasks that wait, and those that they post. Returns how many those were.
    std::size_t runAll();
    /// Runs tasks one by one as they come, until `done` says true, which is asked before each one.
    /// Returns what it said last.
    bool runUntil(const std::function<bool()>& done,
                  std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// Stops the process where tasks wait: for the end of a test that has dealt with them all.
    void requireEmpty() const;

private:
    struct State;
    const std::shared_ptr<State> _state;
};

} // namespace KeloAPI::fakes
