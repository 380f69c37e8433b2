#include <KeloAPI/platform/MainQueue.hpp>

#include <KeloAPI/platform/Contract.hpp>
#include <KeloAPI/platform/NeverDestroyed.hpp>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

namespace KeloAPI {

namespace {

using Deadline = std::chrono::steady_clock::time_point;

void signal(int event) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(event, &one, sizeof one);
}

void clear(int event) {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = read(event, &count, sizeof count);
}

} // namespace

struct MainQueue::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Task> waiting;
    Executor executor;
    int event = -1; // made when a host asks for it: others should not pay a descriptor
    bool stopping = false;
    bool running = false; // a task is on the stack
};

MainQueue::MainQueue() : _state(new State) {}

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
    _state->waiting.push_back(std::move(task));
    if (_state->event >= 0 && _state->waiting.size() == 1) {
        signal(_state->event);
    }
    lock.unlock();
    _state->changed.notify_all();
}

std::size_t MainQueue::drain() {
    std::vector<Task> batch;
    {
        const std::lock_guard lock(_state->mutex);
        if (_state->running || _state->waiting.empty()) {
            return 0;
        }
        batch.swap(_state->waiting);
        _state->running = true;
        if (_state->event >= 0) {
            clear(_state->event);
        }
    }
    for (Task& task : batch) {
        task();
        task = nullptr; // what it captured goes now, not with the batch
    }
    const std::lock_guard lock(_state->mutex);
    _state->running = false;
    return batch.size();
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

void MainQueue::run() {
    while (true) {
        waitForTasks(Deadline::max());
        drain();
        const std::lock_guard lock(_state->mutex);
        if (_state->stopping || _state->running) {
            _state->stopping = false;
            return;
        }
    }
}

bool MainQueue::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const Deadline deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (!waitForTasks(deadline)) {
            return done();
        }
        drain();
        const std::lock_guard lock(_state->mutex);
        if (_state->stopping || _state->running) {
            _state->stopping = false;
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
    if (_state->event < 0) {
        _state->event = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        require(_state->event >= 0, "no descriptor left for the main queue");
        if (!_state->waiting.empty()) {
            signal(_state->event);
        }
    }
    return _state->event;
}

void MainQueue::setExecutor(Executor executor) {
    std::vector<Task> waiting;
    {
        const std::lock_guard lock(_state->mutex);
        _state->executor = executor;
        if (executor) {
            waiting.swap(_state->waiting);
        }
    }
    for (Task& task : waiting) {
        executor(std::move(task));
    }
}

} // namespace KeloAPI
