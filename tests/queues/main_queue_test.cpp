#include "support/TimeLimit.hpp"

#include <KeloAPI/queues/MainQueue.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <mutex>
#include <semaphore>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace KeloAPI {

using testing::timeLimit;

using ::testing::ElementsAre;
using namespace std::chrono_literals;

static_assert(!std::is_default_constructible_v<MainQueue> && !std::is_destructible_v<MainQueue>);
static_assert(std::is_same_v<decltype(MainQueue::main()), MainQueue&>);

class MainQueueTest : public ::testing::Test {
protected:
    ~MainQueueTest() override {
        // The queue is the process's one: leave it as it was found.
        queue.setExecutor({});
        while (queue.drain() > 0) {
        }
        queue.stop();
        queue.run();
    }

    /// A task that notes its number.
    MainQueue::Task note(int number) {
        return [this, number] { ran.push_back(number); };
    }

    bool readable(std::chrono::milliseconds timeout = 0ms) {
        pollfd watched{queue.fileDescriptor(), POLLIN, 0};
        return poll(&watched, 1, static_cast<int>(timeout.count())) == 1;
    }

    MainQueue& queue = MainQueue::main();
    std::vector<int> ran;
};

using MainQueueDeathTest = MainQueueTest;

TEST_F(MainQueueTest, DrainRunsWhatWaitsInOrder) {
    EXPECT_EQ(&MainQueue::main(), &queue) << "one per process";
    EXPECT_EQ(queue.drain(), 0U);
    queue.async([this] {
        queue.async(note(3)); // for the next call
        ran.push_back(1);
    });
    queue.async(note(2));
    EXPECT_TRUE(ran.empty()) << "nothing runs inside the call that posts";
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_THAT(ran, ElementsAre(1, 2));
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
    EXPECT_EQ(queue.drain(), 0U);
}

TEST_F(MainQueueTest, NoTaskRunsInsideAnother) {
    const auto runNested = [this] {
        EXPECT_EQ(queue.drain(), 0U);
        queue.run(); // in the last task, too, which nothing waits behind
        EXPECT_FALSE(queue.runUntil([] { return false; }, 10min));
        ran.push_back(static_cast<int>(ran.size()));
    };
    queue.async(runNested);
    queue.async(runNested);
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_THAT(ran, ElementsAre(0, 1));
}

TEST_F(MainQueueTest, StopTakesEffectAfterTheTaskThatRuns) {
    queue.async([this] {
        queue.stop();
        queue.run(); // nested, which leaves the stop to the one outside
        ran.push_back(1);
    });
    queue.async(note(2));
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1)) << "the second task goes on waiting";
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(MainQueueTest, AStopBeforeTheRunEndsItAtOnce) {
    queue.async(note(1));
    queue.stop();
    queue.run();
    EXPECT_TRUE(ran.empty());
    queue.async([this] { queue.stop(); });
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1)) << "and ends only that one";
}

TEST_F(MainQueueTest, RunWaitsForTasksAndStopsOfOtherThreads) {
    std::thread::id ranOn;
    std::promise<void> hasRun;
    std::thread other;
    queue.async([&] { // by then the queue runs
        other = std::thread([&] {
            queue.async([&] {
                ranOn = std::this_thread::get_id();
                hasRun.set_value();
            });
            hasRun.get_future().wait();
            queue.stop();
        });
    });
    queue.run();
    other.join();
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(MainQueueTest, RunUntilAsksAfterEachBatch) {
    for (int i = 1; i <= 3; ++i) {
        queue.async(note(i));
    }
    EXPECT_TRUE(queue.runUntil([this] { return ran.size() >= 2; }, timeLimit));
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
    queue.async(note(4));
    EXPECT_TRUE(queue.runUntil([] { return true; }, timeLimit)) << "true already: nothing runs";
    EXPECT_EQ(ran.size(), 3U);
}

TEST_F(MainQueueTest, RunUntilTimesOut) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(queue.runUntil([] { return false; }, 20ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    EXPECT_FALSE(queue.runUntil([] { return false; }, 0ms));
    EXPECT_FALSE(queue.runUntil([] { return false; }, -5ms));
    EXPECT_FALSE(queue.runUntil([] { return false; }, std::chrono::milliseconds::min()));
}

TEST_F(MainQueueTest, RunUntilTimesOutThoughTasksKeepComing) {
    std::function<void()> again = [&] { queue.async(again); };
    queue.async(again);
    EXPECT_FALSE(queue.runUntil([] { return false; }, 20ms));
    again = [] {};
    while (queue.drain() > 0) {
    }
}

TEST_F(MainQueueTest, RunUntilMayWaitForEver) {
    bool posted = false;
    std::thread other;
    queue.async([&] { // by then the queue runs
        other = std::thread([&] { queue.async([&] { posted = true; }); });
    });
    EXPECT_TRUE(queue.runUntil([&] { return posted; }, std::chrono::milliseconds::max()));
    other.join();
}

TEST_F(MainQueueTest, RunUntilEndsAtAStop) {
    queue.async([this] { queue.stop(); });
    queue.async(note(2));
    EXPECT_FALSE(queue.runUntil([] { return false; }, 10min));
    EXPECT_TRUE(ran.empty());
}

TEST_F(MainQueueDeathTest, ATaskThatThrowsEndsTheProcess) {
    EXPECT_DEATH(
        {
            queue.async([] { throw std::runtime_error("thrown by a task"); });
            try {
                queue.drain();
            } catch (const std::runtime_error&) {
                exit(0);
            }
        },
        "thrown by a task");
}

TEST_F(MainQueueTest, WhatATaskHeldMayPostAsItGoes) {
    struct Poster {
        ~Poster() { MainQueue::main().async(task); }
        MainQueue::Task task;
    };
    auto poster = std::make_shared<Poster>();
    poster->task = note(1);
    queue.async([poster = std::move(poster)] {});
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1));
}

// Under a host's own loop: the file descriptor and the executor.

TEST_F(MainQueueDeathTest, WithoutADescriptorLeftTheProcessStops) {
    // In a process of its own: in this one an earlier test may have had the descriptor made.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Not by this test's member: without a descriptor the sanitizers cannot check its class.
    MainQueue& main = MainQueue::main();
    EXPECT_DEATH(
        {
            const rlimit none{};
            setrlimit(RLIMIT_NOFILE, &none);
            main.fileDescriptor();
        },
        "KeloAPI: contract violated: no descriptor left for the main queue\n$");
}

TEST_F(MainQueueTest, TheDescriptorIsReadableWhileTasksWait) {
    queue.async(note(1));
    EXPECT_TRUE(readable()) << "asked for after the post";
    queue.async([this] { queue.async(note(2)); });
    EXPECT_TRUE(readable());
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_TRUE(readable()) << "a task's own task waits";
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_FALSE(readable());
    queue.async([this] { queue.stop(); });
    queue.async(note(3));
    queue.run();
    EXPECT_TRUE(readable()) << "what a stop leaves";
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_FALSE(readable());
    EXPECT_EQ(queue.fileDescriptor(), queue.fileDescriptor());
}

TEST_F(MainQueueTest, APollLoopIsWokenByAnotherThread) {
    ASSERT_FALSE(readable());
    std::atomic<int> count = 0;
    std::thread other([&] {
        for (int i = 0; i < 200; ++i) {
            queue.async([&] { ++count; });
        }
    });
    while (count < 200 && readable(timeLimit)) {
        queue.drain();
    }
    other.join();
    EXPECT_EQ(count, 200);
    EXPECT_FALSE(readable());
}

TEST_F(MainQueueTest, AnExecutorTakesEveryTaskAndAtOnceThoseThatWait) {
    queue.async(note(1));
    queue.async(note(2));
    ASSERT_TRUE(readable());
    std::vector<MainQueue::Task> host;
    queue.setExecutor([&](MainQueue::Task task) { host.push_back(std::move(task)); });
    EXPECT_EQ(host.size(), 2U);
    EXPECT_FALSE(readable()) << "nothing waits here any more: a poll loop must not spin";
    queue.async(note(3));
    EXPECT_EQ(queue.drain(), 0U);
    ASSERT_EQ(host.size(), 3U);
    EXPECT_TRUE(ran.empty());
    for (auto& task : host) {
        task();
    }
    queue.setExecutor({});
    queue.async(note(4));
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1, 2, 3, 4));
}

TEST_F(MainQueueTest, WhatIsPostedWhileAnExecutorTakesOverGoesBehind) {
    queue.async(note(1));
    queue.async(note(2));
    std::vector<MainQueue::Task> host;
    queue.setExecutor([&](MainQueue::Task task) {
        if (host.empty()) {
            queue.async(note(3));
        }
        host.push_back(std::move(task));
    });
    EXPECT_EQ(queue.drain(), 0U);
    for (auto& task : host) {
        task();
    }
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST_F(MainQueueTest, AnExecutorMaySetItselfAsideInsideATask) {
    std::vector<MainQueue::Task> host;
    queue.async(
        [&] { queue.setExecutor([&](MainQueue::Task task) { host.push_back(std::move(task)); }); });
    queue.async(note(2));
    EXPECT_EQ(queue.drain(), 1U);
    ASSERT_EQ(host.size(), 1U);
    host.front()();
    EXPECT_THAT(ran, ElementsAre(2));
}

TEST_F(MainQueueTest, TheOrderHoldsWhileAnExecutorComes) {
    for (int round = 0; round < 20; ++round) {
        constexpr int count = 500;
        std::mutex mutex;
        std::vector<int> order;
        std::binary_semaphore underWay{0};
        std::thread other([&] {
            for (int i = 0; i < count; ++i) {
                queue.async([&order, i] { order.push_back(i); });
                if (i == count / 10) {
                    underWay.release();
                }
            }
        });
        underWay.acquire();
        std::vector<MainQueue::Task> host;
        queue.setExecutor([&](MainQueue::Task task) {
            const std::lock_guard lock(mutex);
            host.push_back(std::move(task));
        });
        other.join();
        queue.setExecutor({});
        for (auto& task : host) {
            task();
        }
        ASSERT_EQ(order.size(), static_cast<std::size_t>(count));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}

} // namespace KeloAPI
