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
        while (!_tasks.empty() && _tasks.begin()->first <= Clock::now()) {
            queue.async(std::move(_tasks.begin()->second));
            _tasks.erase(_tasks.begin());
        }
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
    // A task may hold the last reference to an owner that calls this loop when it is destroyed.
    const auto tasks = std::exchange(_tasks, {});
    const auto atInterruption = std::exchange(_atInterruption, nullptr);
}

int Loop::millisecondsToNext() const {
    const auto left = _tasks.empty() ? std::chrono::hours(1) : _tasks.begin()->first - Clock::now();
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return static_cast<int>(std::clamp<std::int64_t>(wait, 0, 3'600'000));
}

} // namespace KeloHost
