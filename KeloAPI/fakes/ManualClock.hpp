#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Export.hpp>

#include <chrono>
#include <functional>
#include <memory>

namespace KeloAPI::fakes {

/// Time that passes when a test says so. While it exists, `Date::now()` is its time, and with it
/// all that the library says of when something was: the timelines of calls, the dates of loops and
/// views, when an upload expires. A `ScriptedTransport` over it answers late and times out by it;
/// what a host does later by itself goes in with `after`. The real transport waits in real time.
///
/// There may be one at a time: a second one stops the process. Usable from any thread.
class KELO_API ManualClock {
public:
    using Task = std::function<void()>; ///< What is done when its time has come.

    /// Stands still at this instant: 2026-01-01 00:00 UTC unless another is given.
    explicit ManualClock(Date start = std::chrono::sys_days(std::chrono::year(2026) / 1 / 1));
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;
    /// From then on real time counts again. Tasks whose time has not come never run.
    ~ManualClock();

    /// Its time.
    Date now() const;

    /// Lets time pass. The tasks that become due run inside the call, in the order of their times,
    /// each while the clock stands at its time. A negative time stops the process.
    void advance(std::chrono::milliseconds time);

    /// Runs `task` when so much time has passed: at the next `advance` where it is 0.
    void after(std::chrono::milliseconds time, Task task);

private:
    struct State;
    const std::unique_ptr<State> _state;
};

} // namespace KeloAPI::fakes
