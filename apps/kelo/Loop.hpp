#pragma once

#include <chrono>
#include <functional>
#include <map>

namespace KeloHost {

/// Runs the library's main queue until `stop`, and tasks at set times and at Ctrl-C. Used on the
/// main thread.
class Loop {
public:
    using Task = std::function<void()>;
    using Seconds = std::chrono::duration<double>;

    void run();
    void stop();

    /// Runs the task when the time has passed.
    void after(Seconds time, Task task);
    /// Runs the task at Ctrl-C, where the program would end otherwise. The second Ctrl-C ends it.
    void atInterruption(Task task);
    /// Forgets all tasks that wait.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    int millisecondsToNext() const;

    std::multimap<Clock::time_point, Task> _tasks;
    Task _atInterruption;
    int _interruption = -1;
    bool _stopped = false;
};

} // namespace KeloHost
