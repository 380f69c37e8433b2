// What a process's exit asks of the queues' threads.
#include "support/TemporaryFolder.hpp"
#include "support/TimeLimit.hpp"

#include <KeloAPI/queues/internal/ExitGuard.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <thread>

namespace KeloAPI::testing {

using namespace std::chrono_literals;

namespace {

/// What a process that exits finds once the library's threads have been asked to park.
enum Finding : int { AsItShouldBe = 0, AtFault = 1, PatienceRanOut = 2 };

/// How long an exit waits for threads. A busy machine may keep one from parking for so long.
constexpr auto patience = 1s;

using Clock = std::chrono::steady_clock;

std::atomic<bool> stepIsDone = false;
Clock::time_point exitBegan;

/// The library's handler is registered behind it, and so runs before it.
void lookAround() {
    const bool gaveUp = Clock::now() - exitBegan >= patience;
    _exit(gaveUp ? PatienceRanOut : stepIsDone ? AsItShouldBe : AtFault);
}

/// Exits in the midst of what `work` sets up.
void exitAfter(const std::function<void()>& work) {
    std::atexit(lookAround);
    work();
    exitBegan = Clock::now();
    std::exit(AtFault);
}

/// What is found when `run` leaves a process so: again, where a thread has not parked in time.
template <class Run>
int findingOf(const Run& run) {
    int finding = PatienceRanOut;
    for (int attempt = 0; attempt < 5 && finding == PatienceRanOut; ++attempt) {
        run([&](int status) {
            finding = WIFEXITED(status) ? WEXITSTATUS(status) : AtFault;
            return true;
        });
    }
    return finding;
}

} // namespace

class QueueExitDeathTest : public ::testing::Test {
protected:
    // In a process of its own, in which no thread of an earlier test is at work.
    QueueExitDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(QueueExitDeathTest, WaitsForTheTaskThatRunsAndLetsNoOtherBegin) {
    const auto exitInTask = [] {
        static SerialQueue queue("busy");
        static std::promise<void> isInside;
        queue.async([] {
            isInside.set_value();
            eventually(ExitGuard::isExiting);
            std::this_thread::sleep_for(50ms); // a slow step
            stepIsDone = true;
        });
        queue.async([] { _exit(AtFault); });
        isInside.get_future().wait_for(timeLimit);
    };
    const int finding =
        findingOf([&](const auto& note) { EXPECT_EXIT(exitAfter(exitInTask), note, ""); });
    EXPECT_EQ(finding, AsItShouldBe);
}

TEST_F(QueueExitDeathTest, WakesAThreadThatSleeps) {
    const auto exitWhenIdle = [] {
        static SerialQueue queue("idle");
        static std::promise<pid_t> thread;
        queue.async([] { thread.set_value(gettid()); });
        auto known = thread.get_future();
        if (known.wait_for(timeLimit) == std::future_status::ready) {
            const std::string stat = "/proc/self/task/" + std::to_string(known.get()) + "/stat";
            stepIsDone = eventually([&] { return contentsOf(stat).find(") S ") != stat.npos; });
        }
    };
    const int finding =
        findingOf([&](const auto& note) { EXPECT_EXIT(exitAfter(exitWhenIdle), note, ""); });
    EXPECT_EQ(finding, AsItShouldBe);
}

} // namespace KeloAPI::testing
