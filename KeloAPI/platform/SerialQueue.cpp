#include <KeloAPI/platform/Contract.hpp>
#include <KeloAPI/platform/ExitGuard.hpp>
#include <KeloAPI/platform/SerialQueue.hpp>
#include <KeloAPI/platform/SignalShield.hpp>

#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace KeloAPI {

struct SerialQueue::State {
    explicit State(std::string queueLabel)
        : label(std::move(queueLabel)) {}

    void run() noexcept {
        pthread_setname_np(pthread_self(), label.substr(0, 15).c_str());
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
            batch.clear();
            lock.lock();
        }
    }

    void wake() {
        const std::lock_guard lock(mutex);
        somethingToDo.notify_one();
    }

    const std::string label;
    std::mutex mutex;
    std::condition_variable somethingToDo;
    std::vector<Task> waiting;
    std::thread::id thread;
    bool closed = false;
};

SerialQueue::SerialQueue(std::string label)
    : _state(std::make_shared<State>(std::move(label))) {}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(_state->mutex);
        _state->closed = true;
    }
    _state->somethingToDo.notify_one();
}

const std::string& SerialQueue::label() const {
    return _state->label;
}

void SerialQueue::async(Task task) {
    ExitGuard::install();
    // The queue may go with the task, before the call is over.
    const std::shared_ptr<State> state = _state;
    {
        const std::lock_guard lock(state->mutex);
        state->waiting.push_back(std::move(task));
        if (state->thread == std::thread::id()) {
            startThread();
        }
    }
    // Without the lock, or the thread would wake only to wait for it.
    state->somethingToDo.notify_one();
}

void SerialQueue::startThread() {
    const SignalShield shield;
    try {
        // The thread keeps the state alive and ends by itself: nobody has to join it, so the last
        // reference to the queue may go on the queue itself.
        std::thread thread([state = _state] { state->run(); });
        _state->thread = thread.get_id();
        thread.detach();
    } catch (const std::system_error&) {
        contractViolation("no thread can be made for a queue");
    }
}

bool SerialQueue::isCurrent() const {
    const std::lock_guard lock(_state->mutex);
    return _state->thread == std::this_thread::get_id();
}

} // namespace KeloAPI
