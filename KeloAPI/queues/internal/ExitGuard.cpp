#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace KeloAPI::ExitGuard {

namespace {

/// Longer than any step of the library's threads; short enough not to be felt where a host's
/// callback blocks for ever.
constexpr std::chrono::seconds patience(1);

struct Thread {
    std::function<void()> wake;
    bool parked = false;
};

struct Registry {
    const pid_t process = getpid();
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::thread::id, Thread> threads;
    std::atomic<bool> exiting = false;
    std::thread::id exitingThread;
};

/// Never destroyed: a thread may outlive `main`.
std::atomic<Registry*>& current() {
    static std::atomic<Registry*> instance = new Registry;
    return instance;
}

Registry& registry() {
    return *current().load(std::memory_order_acquire);
}

/// A forked child has none of its parent's threads, and its copy of the mutex may be held by one of
/// them: for threads of its own it starts anew.
Registry& registryOfThisProcess() {
    Registry* known = &registry();
    if (known->process == getpid()) {
        return *known;
    }
    auto anew = std::make_unique<Registry>();
    // Another thread may have been faster; its registry is `known` then.
    return current().compare_exchange_strong(known, anew.get()) ? *anew.release() : *known;
}

void parkAllThreads() {
    Registry& all = registry();
    if (all.process != getpid()) {
        return; // a forked child without threads of its own
    }
    const auto self = std::this_thread::get_id();
    std::unique_lock lock(all.mutex);
    all.exitingThread = self;
    all.exiting = true;
    for (const auto& [id, thread] : all.threads) {
        if (id != self) {
            thread.wake();
        }
    }
    // Past the time limit the process exits all the same.
    (void)all.changed.wait_for(lock, patience, [&] {
        return std::all_of(all.threads.begin(), all.threads.end(), [&](const auto& entry) {
            return entry.first == self || entry.second.parked;
        });
    });
}

} // namespace

void install() {
    static std::once_flag once;
    std::call_once(once, installBehindLibrary);
}

void installBehindLibrary() {
    (void)std::atexit(parkAllThreads);
}

bool isExiting() {
    return registry().exiting.load(std::memory_order_relaxed);
}

void parkIfExiting() {
    Registry& all = registry();
    if (!all.exiting.load(std::memory_order_relaxed)) {
        return;
    }
    {
        const std::lock_guard lock(all.mutex);
        const auto self = std::this_thread::get_id();
        const auto found = all.threads.find(self);
        if (found == all.threads.end() || self == all.exitingThread) {
            return;
        }
        found->second.parked = true;
    }
    all.changed.notify_all();
    while (true) {
        pause();
    }
}

Member::Member(std::function<void()> wake) {
    Registry& all = registryOfThisProcess();
    const std::lock_guard lock(all.mutex);
    all.threads.insert_or_assign(std::this_thread::get_id(), Thread{std::move(wake)});
}

Member::~Member() {
    Registry& all = registry();
    {
        const std::lock_guard lock(all.mutex);
        all.threads.erase(std::this_thread::get_id());
    }
    all.changed.notify_all();
}

} // namespace KeloAPI::ExitGuard
