#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace KeloHost {

/// Turns moments and Ctrl-C into tasks of the library's main queue, so that a command can wait
/// while the queue runs. Used on the main thread.
class Events {
public:
    using Task = std::function<void()>;
    using Seconds = std::chrono::duration<double>;

    Events();
    ~Events();
    Events(const Events&) = delete;
    Events& operator=(const Events&) = delete;

    /// Runs the task when the time has passed.
    void after(Seconds time, Task task);
    /// Runs the task at Ctrl-C, where the program would end otherwise. The second Ctrl-C ends it.
    void atInterruption(Task task);
    /// Forgets all tasks that wait.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    void wait();
    int millisecondsToNext();
    void postDue();
    void wake() const;

    std::mutex _mutex;
    std::multimap<Clock::time_point, Task> _tasks;
    Task _atInterruption;
    int _interruption = -1;
    bool _ends = false;
    int _woken;
    std::thread _thread;
};

} // namespace KeloHost
