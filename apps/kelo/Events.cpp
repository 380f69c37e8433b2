#include "Events.hpp"

#include "Terminal.hpp"

#include <KeloAPI/queues/MainQueue.hpp>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace KeloHost {

using KeloAPI::MainQueue;

Events::Events()
    : _woken(eventfd(0, EFD_CLOEXEC))
    , _thread([this] { wait(); }) {}

Events::~Events() {
    {
        const std::lock_guard lock(_mutex);
        _ends = true;
    }
    wake();
    _thread.join();
    ::close(_woken);
}

void Events::after(Seconds time, Task task) {
    const auto due = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    {
        const std::lock_guard lock(_mutex);
        _tasks.emplace(due, std::move(task));
    }
    wake();
}

void Events::atInterruption(Task task) {
    {
        const std::lock_guard lock(_mutex);
        _atInterruption = std::move(task);
        _interruption = Terminal::catchInterruption();
    }
    wake();
}

void Events::clear() {
    // Tasks may hold their owner, and with it this object, alive: they go without the lock.
    std::multimap<Clock::time_point, Task> tasks;
    Task atInterruption;
    const std::lock_guard lock(_mutex);
    tasks.swap(_tasks);
    atInterruption.swap(_atInterruption);
}

void Events::wait() {
    for (;;) {
        pollfd watched[] = {{_woken, POLLIN, 0}, {-1, POLLIN, 0}};
        {
            const std::lock_guard lock(_mutex);
            if (_ends) {
                return;
            }
            watched[1].fd = _interruption;
        }
        ::poll(watched, 2, millisecondsToNext());
        std::uint64_t count = 0;
        if ((watched[0].revents & POLLIN) != 0) {
            [[maybe_unused]] const auto got = ::read(_woken, &count, sizeof count);
        }
        if ((watched[1].revents & POLLIN) != 0) {
            const std::lock_guard lock(_mutex);
            _interruption = -1;
            if (_atInterruption) {
                MainQueue::main().async(std::exchange(_atInterruption, nullptr));
            }
        }
        postDue();
    }
}

int Events::millisecondsToNext() {
    const std::lock_guard lock(_mutex);
    if (_tasks.empty()) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(_tasks.begin()->first - Clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3'600'000));
}

void Events::postDue() {
    const std::lock_guard lock(_mutex);
    const auto notDue = _tasks.upper_bound(Clock::now());
    for (auto task = _tasks.begin(); task != notDue; ++task) {
        MainQueue::main().async(std::move(task->second));
    }
    _tasks.erase(_tasks.begin(), notDue);
}

void Events::wake() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(_woken, &one, sizeof one);
}

} // namespace KeloHost
