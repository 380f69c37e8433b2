#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/NeverDestroyed.hpp>
#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace KeloAPI {

namespace {

using Deadline = std::chrono::steady_clock::time_point;

/// The instant so long from now; the last one there is where that lies beyond it.
Deadline deadlineAfter(std::chrono::milliseconds timeout) {
    const auto now = std::chrono::steady_clock::now();
    const auto most = std::chrono::duration_cast<std::chrono::milliseconds>(Deadline::max() - now);
    return timeout < most ? now + std::max(timeout, std::chrono::milliseconds(0)) : Deadline::max();
}

/// An exception that left a task would take the tasks behind it along, and with them completions
/// that somebody waits for: it ends the process where it comes from.
void runToItsEnd(const MainQueue::Task& task) noexcept {
    task();
}

} // namespace

/// While a task waits and nobody drains, the descriptor is readable (tests/interleavings).
struct MainQueue::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> waiting;
    Executor executor;
    System::Event event; // made when a host asks for it: others should not pay a descriptor
    bool stopping = false;
    bool running = false; // a task is on the stack

    void clearEventIfIdle() {
        if (event.isOpen() && waiting.empty()) {
            event.clear();
        }
    }
};

MainQueue::MainQueue()
    : _state(new State) {}

MainQueue& MainQueue::main() {
    static NeverDestroyed<MainQueue> instance;
    return *instance;
}

void MainQueue::async(Task task) {
    std::unique_lock lock(_state->mutex);
    if (_state->executor) {
        const Executor executor = _state->executor;
        lock.unlock();
        executor(std::move(task));
        return;
    }
    // A function that was moved from may still hold what it captured: that goes before the task can
    // run.
    _state->waiting.push_back(std::exchange(task, nullptr));
    if (_state->event.isOpen() && _state->waiting.size() == 1) {
        _state->event.set();
    }
    lock.unlock();
    _state->changed.notify_all();
}

std::size_t MainQueue::drain() {
    return runWaiting(/*untilStopped=*/false);
}

std::size_t MainQueue::runWaiting(bool untilStopped) {
    std::unique_lock lock(_state->mutex);
    if (_state->running) {
        return 0;
    }
    _state->running = true;
    std::size_t count = 0;
    for (std::size_t left = _state->waiting.size(); left > 0 && !_state->waiting.empty(); --left) {
        if (untilStopped && _state->stopping) {
            break;
        }
        Task task = std::move(_state->waiting.front());
        _state->waiting.pop_front();
        _state->clearEventIfIdle();
        lock.unlock();
        runToItsEnd(task);
        task = nullptr; // what it captured goes now, and without the lock
        lock.lock();
        ++count;
    }
    _state->running = false;
    return count;
}

bool MainQueue::waitForTasks(Deadline deadline) {
    std::unique_lock lock(_state->mutex);
    const auto ready = [this] { return !_state->waiting.empty() || _state->stopping; };
    if (deadline == Deadline::max()) {
        _state->changed.wait(lock, ready);
        return true;
    }
    return _state->changed.wait_until(lock, deadline, ready);
}

bool MainQueue::takesPart() {
    const std::lock_guard lock(_state->mutex);
    return !_state->running;
}

bool MainQueue::wasStopped() {
    const std::lock_guard lock(_state->mutex);
    return std::exchange(_state->stopping, false);
}

void MainQueue::run() {
    while (takesPart()) {
        waitForTasks(Deadline::max());
        runWaiting(/*untilStopped=*/true);
        if (wasStopped()) {
            return;
        }
    }
}

bool MainQueue::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const Deadline deadline = deadlineAfter(timeout);
    while (!done() && takesPart() && waitForTasks(deadline)) {
        runWaiting(/*untilStopped=*/true);
        // Asked here and not only where nothing waits: tasks may keep coming for ever.
        if (wasStopped() || std::chrono::steady_clock::now() >= deadline) {
            break;
        }
    }
    return done();
}

void MainQueue::stop() {
    {
        const std::lock_guard lock(_state->mutex);
        _state->stopping = true;
    }
    _state->changed.notify_all();
}

int MainQueue::fileDescriptor() {
    const std::lock_guard lock(_state->mutex);
    if (!_state->event.isOpen()) {
        require(_state->event.open(), "no descriptor left for the main queue");
        if (!_state->waiting.empty()) {
            _state->event.set();
        }
    }
    return _state->event.descriptor();
}

void MainQueue::setExecutor(Executor executor) {
    std::unique_lock lock(_state->mutex);
    // The waiting tasks go first; what is posted meanwhile goes behind them.
    while (executor && !_state->waiting.empty()) {
        std::deque<Task> batch;
        batch.swap(_state->waiting);
        _state->clearEventIfIdle();
        lock.unlock();
        for (Task& task : batch) {
            executor(std::move(task));
        }
        lock.lock();
    }
    _state->executor.swap(executor); // the old one goes without the lock
}

} // namespace KeloAPI
