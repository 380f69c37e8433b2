#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/fakes/ManualMainQueue.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <utility>

namespace KeloAPI::fakes {

namespace {

std::atomic<bool> manualQueueExists = false;

/// As on the queue itself, an exception that leaves a task ends the process.
void runToEnd(const MainQueue::Task& task) noexcept {
    task();
}

} // namespace

struct ManualMainQueue::State {
    void add(MainQueue::Task task) {
        std::unique_lock lock(mutex);
        if (isOver) {
            lock.unlock();
            MainQueue::main().async(std::move(task));
            return;
        }
        waiting.push_back(std::move(task));
        lock.unlock();
        changed.notify_all();
    }

    /// The oldest task, for which it waits until then; empty where none comes, or one is running.
    MainQueue::Task take(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock(mutex);
        const auto isReady = [this] { return isRunning || !waiting.empty(); };
        if (!changed.wait_until(lock, deadline, isReady) || isRunning) {
            return {};
        }
        isRunning = true;
        MainQueue::Task task = std::move(waiting.front());
        waiting.pop_front();
        return task;
    }

    bool runNext(std::chrono::steady_clock::time_point deadline) {
        MainQueue::Task task = take(deadline);
        if (!task) {
            return false;
        }
        runToEnd(task);
        task = nullptr; // what it captured goes as a part of the task
        const std::lock_guard lock(mutex);
        isRunning = false;
        return true;
    }

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<MainQueue::Task> waiting;
    bool isRunning = false;
    bool isOver = false;
};

ManualMainQueue::ManualMainQueue()
    : _state(std::make_shared<State>()) {
    require(!manualQueueExists.exchange(true), "there is a main queue driven by hand already");
    // A thread may be about to post when this object goes: the state outlives it.
    MainQueue::main().setExecutor(
        [state = _state](MainQueue::Task task) { state->add(std::move(task)); });
}

ManualMainQueue::~ManualMainQueue() {
    MainQueue::main().setExecutor({});
    std::deque<MainQueue::Task> left;
    {
        const std::lock_guard lock(_state->mutex);
        _state->isOver = true;
        left.swap(_state->waiting);
    }
    for (MainQueue::Task& task : left) {
        MainQueue::main().async(std::move(task));
    }
    manualQueueExists = false;
}

std::size_t ManualMainQueue::waitingCount() const {
    const std::lock_guard lock(_state->mutex);
    return _state->waiting.size();
}

bool ManualMainQueue::runNext(std::chrono::milliseconds timeout) {
    return _state->runNext(std::chrono::steady_clock::now() + timeout);
}

std::size_t ManualMainQueue::runAll() {
    std::size_t count = 0;
    while (_state->runNext({})) {
        ++count;
    }
    return count;
}

bool ManualMainQueue::runUntil(const std::function<bool()>& done,
                               std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (!_state->runNext(deadline)) {
            return done();
        }
    }
    return true;
}

void ManualMainQueue::requireEmpty() const {
    const std::size_t count = waitingCount();
    require(count == 0, "tasks of the main queue are left: " + std::to_string(count));
}

} // namespace KeloAPI::fakes
