#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Export.hpp>

#include <chrono>
#include <functional>
#include <memory>

namespace KeloAPI::fakes {

/// Time that passes when a test says so. While the clock exists, `Date::now()` returns its time. So
/// the library takes all its dates from it: the timelines of calls, the dates of loops and views,
/// the expiry of uploads. A `ScriptedTransport` that is given the clock uses it for delays and
/// time-outs, and `after` is a timer for the host's own code. The real transport waits in real
/// time.
///
/// There may be one at a time: a second one stops the process. Usable from any thread.
class KELO_API ManualClock {
public:
    using Task = std::function<void()>; ///< What is done when its time has come.

    /// Stands still at this instant: 2026-01-01 00:00 UTC unless another is given.
    explicit ManualClock(Date start = std::chrono::sys_days(std::chrono::year(2026) / 1 / 1));
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;
    /// Goes back to real time. Tasks that are not due yet never run.
    ~ManualClock();

    /// The time that the clock shows.
    Date now() const;

    /// Lets time pass. Tasks that become due run inside the call, in the order of their times.
    /// While one runs, the clock shows the time it was due. A negative time stops the process.
    void advance(std::chrono::milliseconds time);

    /// Runs `task` once `time` has passed. If `time` is 0, that is at the next `advance`.
    void after(std::chrono::milliseconds time, Task task);

private:
    struct State;
    const std::unique_ptr<State> _state;
};

} // namespace KeloAPI::fakes
