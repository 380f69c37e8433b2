#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/ManualNow.hpp>
#include <KeloAPI/fakes/ManualClock.hpp>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <utility>

namespace KeloAPI::fakes {

namespace {

std::atomic<bool> clockExists = false;

} // namespace

struct ManualClock::State {
    explicit State(Date start)
        : now(start) {}

    /// Never back: a task may have let more time pass.
    void goTo(Date instant) {
        now = std::max(now, instant);
        setNow(now);
    }

    mutable std::mutex mutex;
    Date now;
    /// Those of the same time in the order in which they came.
    std::multimap<Date, Task> tasks;
};

ManualClock::ManualClock(Date start)
    : _state(std::make_unique<State>(start)) {
    require(!clockExists.exchange(true), "there is a clock driven by hand already");
    setNow(start);
}

ManualClock::~ManualClock() {
    setNow(std::nullopt);
    clockExists = false;
}

Date ManualClock::now() const {
    const std::lock_guard lock(_state->mutex);
    return _state->now;
}

void ManualClock::advance(std::chrono::milliseconds time) {
    require(time >= std::chrono::milliseconds(0), "time does not go back");
    std::unique_lock lock(_state->mutex);
    const Date end = _state->now + time;
    while (!_state->tasks.empty() && _state->tasks.begin()->first <= end) {
        auto due = _state->tasks.extract(_state->tasks.begin());
        _state->goTo(due.key());
        lock.unlock();
        due.mapped()();
        due.mapped() = nullptr; // what it captured goes without the lock
        lock.lock();
    }
    _state->goTo(end);
}

void ManualClock::after(std::chrono::milliseconds time, Task task) {
    constexpr std::chrono::milliseconds longest = std::chrono::hours(1'000'000);
    const std::lock_guard lock(_state->mutex);
    _state->tasks.emplace(_state->now + std::min(time, longest), std::move(task));
}

} // namespace KeloAPI::fakes
