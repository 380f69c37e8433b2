#include <KeloAPI/queues/MainQueue.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace KeloAPI {

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

    MainQueue& queue = MainQueue::main();
    std::vector<int> ran;
};

using MainQueueDeathTest = MainQueueTest;

TEST_F(MainQueueTest, IsOnePerProcess) {
    EXPECT_EQ(&MainQueue::main(), &MainQueue::main());
}

TEST_F(MainQueueTest, DrainRunsWhatWaitsInOrder) {
    EXPECT_EQ(queue.drain(), 0U);
    queue.async(note(1));
    queue.async(note(2));
    queue.async(note(3));
    EXPECT_TRUE(ran.empty()) << "nothing runs inside the call that posts";
    EXPECT_EQ(queue.drain(), 3U);
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
    EXPECT_EQ(queue.drain(), 0U);
}

TEST_F(MainQueueTest, DrainLeavesTasksOfTasksForTheNextCall) {
    queue.async([this] {
        queue.async(note(3));
        ran.push_back(1);
    });
    queue.async(note(2));
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_THAT(ran, ElementsAre(1, 2));
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST_F(MainQueueTest, NoTaskRunsInsideAnother) {
    queue.async([this] {
        EXPECT_EQ(queue.drain(), 0U);
        queue.run();
        EXPECT_FALSE(queue.runUntil([] { return false; }, 10min));
        EXPECT_TRUE(ran.empty());
        ran.push_back(1);
    });
    queue.async(note(2));
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(MainQueueTest, ARunInsideTheLastTaskReturnsAtOnce) {
    queue.async([this] {
        queue.run(); // nothing waits: it must not wait for something to come
        ran.push_back(1);
    });
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1));
}

TEST_F(MainQueueTest, RunRunsUntilStopped) {
    queue.async(note(1));
    queue.async([this] {
        queue.async([this] {
            ran.push_back(3);
            queue.stop();
        });
        ran.push_back(2);
    });
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST_F(MainQueueTest, StopTakesEffectAfterTheTaskThatRuns) {
    queue.async([this] {
        queue.stop();
        ran.push_back(1);
    });
    queue.async(note(2));
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1)) << "the second task goes on waiting";
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(MainQueueTest, AStopInANestedRunIsNotLost) {
    queue.async([this] {
        queue.stop();
        queue.run();
        ran.push_back(1);
    });
    queue.async(note(2));
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1));
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
    EXPECT_TRUE(queue.runUntil([this] { return ran.size() >= 2; }, 10s));
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
    queue.async(note(4));
    EXPECT_TRUE(queue.runUntil([] { return true; }, 10s)) << "true already: nothing runs";
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
    std::atomic<bool> posted = false;
    std::thread other([&] {
        std::this_thread::sleep_for(5ms);
        queue.async([&] { posted = true; });
    });
    EXPECT_TRUE(queue.runUntil([&] { return posted.load(); }, std::chrono::milliseconds::max()));
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

TEST_F(MainQueueTest, LetsATaskGoBeforeTheNextOneRuns) {
    auto captured = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = captured;
    bool gone = false;
    queue.async([captured = std::move(captured)] {});
    queue.async([&] { gone = watch.expired(); });
    queue.drain();
    EXPECT_TRUE(gone);
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

TEST_F(MainQueueTest, KeepsTheOrderOfEachPostingThread) {
    constexpr int perThread = 3000;
    std::vector<std::pair<int, int>> seen;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < perThread; ++i) {
                queue.async([&, thread, i] { seen.emplace_back(thread, i); });
            }
        });
    }
    EXPECT_TRUE(queue.runUntil([&] { return seen.size() == 3U * perThread; }, 20s));
    for (auto& thread : threads) {
        thread.join();
    }
    int next[3] = {};
    for (const auto& [thread, i] : seen) {
        EXPECT_EQ(i, next[thread]++);
    }
}

} // namespace KeloAPI
