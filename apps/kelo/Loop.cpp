#include "Loop.hpp"

#include "Terminal.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <poll.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace KeloHost {

using KeloAPI::MainQueue;

void Loop::run() {
    MainQueue& queue = MainQueue::main();
    while (!_stopped) {
        pollfd watched[] = {{queue.fileDescriptor(), POLLIN, 0}, {_interruption, POLLIN, 0}};
        ::poll(watched, 2, millisecondsToNext());
        if ((watched[1].revents & POLLIN) != 0) {
            _interruption = -1;
            if (_atInterruption) {
                queue.async(std::exchange(_atInterruption, nullptr));
            }
        }
        postDue();
        queue.runUntil([this] { return _stopped; }, std::chrono::milliseconds(0));
    }
}

void Loop::stop() {
    _stopped = true;
    MainQueue::main().stop();
}

void Loop::after(Seconds time, Task task) {
    _tasks.emplace(Clock::now() + std::chrono::duration_cast<Clock::duration>(time),
                   std::move(task));
}

void Loop::atInterruption(Task task) {
    _atInterruption = std::move(task);
    _interruption = Terminal::catchInterruption();
}

void Loop::clear() {
    // Tasks may hold their owner alive, whose end must not meet them half gone.
    const auto tasks = std::exchange(_tasks, {});
    const auto atInterruption = std::exchange(_atInterruption, nullptr);
}

int Loop::millisecondsToNext() const {
    if (_tasks.empty()) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(_tasks.begin()->first - Clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3'600'000));
}

void Loop::postDue() {
    const auto notDue = _tasks.upper_bound(Clock::now());
    for (auto task = _tasks.begin(); task != notDue; ++task) {
        MainQueue::main().async(std::move(task->second));
    }
    _tasks.erase(_tasks.begin(), notDue);
}

} // namespace KeloHost
