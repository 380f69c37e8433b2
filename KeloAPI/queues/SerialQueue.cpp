#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>
#include <KeloAPI/queues/internal/SignalShield.hpp>
#include <KeloAPI/queues/MainQueue.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace KeloAPI {

/// The thread neither sleeps nor ends while a task waits (tests/interleavings).
struct SerialQueue::State {
    explicit State(std::string queueLabel)
        : label(std::move(queueLabel)) {}

    void run() noexcept {
        System::nameThread(label);
        const ExitGuard::Member member([this] { wake(); });
        std::unique_lock lock(mutex);
        while (true) {
            somethingToDo.wait(
                lock, [this] { return !waiting.empty() || closed || ExitGuard::isExiting(); });
            if (waiting.empty() && closed) {
                return;
            }
            std::vector<Task> batch;
            batch.swap(waiting);
            lock.unlock();
            ExitGuard::parkIfExiting();
            for (Task& task : batch) {
                task();
                task = nullptr; // what it captured goes now, not with the batch
                ExitGuard::parkIfExiting();
            }
            lock.lock();
        }
    }

    void wake() {
        const std::lock_guard lock(mutex);
        somethingToDo.notify_one();
    }

    const std::string label;
    const pid_t process = getpid();
    std::mutex mutex;
    std::condition_variable somethingToDo;
    std::vector<Task> waiting;
    std::thread::id thread;
    bool closed = false;
};

SerialQueue::SerialQueue(std::string label)
    : _state(std::make_shared<State>(std::move(label))) {}

SerialQueue::~SerialQueue() {
    if (isInherited()) {
        return; // a thread that did not come along may have held the mutex
    }
    {
        const std::lock_guard lock(_state->mutex);
        _state->closed = true;
    }
    _state->somethingToDo.notify_one();
}

const std::string& SerialQueue::label() const {
    return _state->label;
}

bool SerialQueue::isInherited() const {
    return _state->process != getpid();
}

bool SerialQueue::open() {
    if (isInherited()) {
        return false;
    }
    ExitGuard::install();
    const std::lock_guard lock(_state->mutex);
    return startThread();
}

void SerialQueue::async(Task task) {
    enter(task, true);
}

void SerialQueue::asyncOrOnMain(Task task) {
    if (!enter(task, false)) {
        MainQueue::main().async(std::exchange(task, nullptr));
    }
}

/// False, and the task is left as it is, where it would never run here, or only once the system has
/// a thread again and it may not wait for that.
bool SerialQueue::enter(Task& task, bool mayWaitForThread) {
    if (isInherited()) {
        return false;
    }
    ExitGuard::install();
    // The queue may go with the task, before the call is over.
    const std::shared_ptr<State> state = _state;
    {
        const std::lock_guard lock(state->mutex);
        if (!startThread() && !mayWaitForThread) {
            return false;
        }
        // A function that was moved from may still hold what it captured: that goes before the task
        // can run.
        state->waiting.push_back(std::exchange(task, nullptr));
    }
    // Without the lock, or the thread would wake only to wait for it.
    state->somethingToDo.notify_one();
    return true;
}

/// Unless it runs already. Under the mutex; false when the system has none to give.
bool SerialQueue::startThread() {
    if (_state->thread != std::thread::id()) {
        return true;
    }
    const SignalShield shield;
    try {
        // The thread keeps the state alive and ends by itself: nobody has to join it, so the last
        // reference to the queue may go on the queue itself.
        std::thread thread([state = _state] { state->run(); });
        _state->thread = thread.get_id();
        thread.detach();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

bool SerialQueue::isCurrent() const {
    const std::lock_guard lock(_state->mutex);
    return _state->thread == std::this_thread::get_id();
}

} // namespace KeloAPI
