#include "support/MainLoop.hpp"
#include "support/Sanitizers.hpp"
#include "support/Shortage.hpp"

#include <KeloAPI/queues/SerialQueue.hpp>

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <future>
#include <thread>

namespace KeloAPI {

namespace {

constexpr std::chrono::seconds soon(20);

/// Waits until the tasks posted so far have run.
void flush(SerialQueue& queue) {
    std::promise<void> done;
    queue.async([&] { done.set_value(); });
    ASSERT_EQ(done.get_future().wait_for(soon), std::future_status::ready);
}

} // namespace

TEST(SerialQueueDeathTest, TasksWaitForAThread) {
    if (testing::isSanitized) {
        GTEST_SKIP() << "sanitizers need the address space themselves";
    }
    // In a process of its own, which has no stack of an ended thread to use again.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            SerialQueue queue("starved");
            std::promise<void> waited;
            bool ranOnMain = false;
            {
                const testing::NoRoomForAThread shortage;
                queue.async([&] { waited.set_value(); });
                queue.asyncOrOnMain([&] { ranOnMain = true; });
                if (queue.open() || !testing::runUntil([&] { return ranOnMain; })) {
                    std::exit(1);
                }
            }
            const bool opened = queue.open();
            std::exit(
                opened && waited.get_future().wait_for(soon) == std::future_status::ready ? 0 : 2);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(SerialQueueTest, RunsTasksInOrderOnOneThreadOfItsOwn) {
    SerialQueue queue("order");
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int i = 0; i < 1000; ++i) {
        queue.async([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        });
    }
    flush(queue);
    ASSERT_EQ(order.size(), 1000U);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
        EXPECT_EQ(threads[static_cast<std::size_t>(i)], threads.front());
    }
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(SerialQueueTest, KeepsTheOrderOfEachPostingThread) {
    SerialQueue queue("many");
    constexpr int perThread = 2000;
    std::vector<std::pair<int, int>> seen;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < perThread; ++i) {
                queue.async([&, thread, i] { seen.emplace_back(thread, i); });
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    flush(queue);
    ASSERT_EQ(seen.size(), 4U * perThread);
    int next[4] = {};
    for (const auto& [thread, i] : seen) {
        EXPECT_EQ(i, next[thread]++);
    }
}

TEST(SerialQueueTest, ATaskPostedByATaskRunsAfterIt) {
    SerialQueue queue("nested");
    std::vector<int> order;
    queue.async([&] {
        queue.async([&] { order.push_back(2); });
        order.push_back(1);
    });
    flush(queue);
    flush(queue);
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(SerialQueueTest, KnowsItsOwnThread) {
    SerialQueue queue("current");
    SerialQueue other("other");
    EXPECT_FALSE(queue.isCurrent()) << "no thread yet";
    std::atomic<bool> inside = false;
    std::atomic<bool> insideOther = true;
    queue.async([&] {
        inside = queue.isCurrent();
        insideOther = other.isCurrent();
    });
    flush(queue);
    flush(other);
    EXPECT_TRUE(inside);
    EXPECT_FALSE(insideOther);
    EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialQueueTest, NamesItsThread) {
    SerialQueue queue("a label of more than fifteen bytes");
    std::string name;
    queue.async([&] {
        char buffer[32] = {};
        pthread_getname_np(pthread_self(), buffer, sizeof buffer);
        name = buffer;
    });
    flush(queue);
    EXPECT_EQ(name, "a label of more");
}

TEST(SerialQueueTest, TasksThatArePostedStillRunWhenItGoes) {
    std::promise<void> hold;
    std::promise<int> done;
    std::atomic<int> count = 0;
    {
        SerialQueue queue("gone");
        queue.async([&] { hold.get_future().wait(); });
        for (int i = 0; i < 10; ++i) {
            queue.async([&] { ++count; });
        }
        queue.async([&] { done.set_value(count); });
    }
    EXPECT_EQ(count, 0) << "the end of the queue does not wait for its tasks";
    hold.set_value();
    auto result = done.get_future();
    ASSERT_EQ(result.wait_for(soon), std::future_status::ready);
    EXPECT_EQ(result.get(), 10);
}

TEST(SerialQueueTest, MayGoInsideOneOfItsTasks) {
    std::promise<void> done;
    auto queue = std::make_shared<SerialQueue>("suicide");
    queue->async([held = queue, &done]() mutable {
        held->async([&done] { done.set_value(); });
        held.reset();
    });
    const std::weak_ptr<SerialQueue> watch = queue;
    queue.reset();
    ASSERT_EQ(done.get_future().wait_for(soon), std::future_status::ready);
    EXPECT_TRUE(watch.expired());
}

TEST(SerialQueueTest, MayGoWithTheCaptureOfItsLastTask) {
    struct Owner {
        std::shared_ptr<SerialQueue> queue;
        std::promise<std::thread::id>* gone = nullptr;
        ~Owner() { gone->set_value(std::this_thread::get_id()); }
    };
    std::promise<std::thread::id> gone;
    auto result = gone.get_future();
    {
        auto queue = std::make_shared<SerialQueue>("capture");
        auto owner = std::make_shared<Owner>();
        owner->queue = queue;
        owner->gone = &gone;
        auto* raw = queue.get();
        queue.reset();
        raw->async([owner = std::move(owner)] {});
    }
    ASSERT_EQ(result.wait_for(soon), std::future_status::ready);
    EXPECT_NE(result.get(), std::this_thread::get_id());
}

TEST(SerialQueueTest, LetsATaskGoBeforeTheNextOneRuns) {
    SerialQueue queue("release");
    std::weak_ptr<int> watch;
    {
        auto captured = std::make_shared<int>(2);
        watch = captured;
        queue.async([captured = std::move(captured)] {});
    }
    std::atomic<bool> gone = false;
    queue.async([&] { gone = watch.expired(); });
    flush(queue);
    EXPECT_TRUE(gone);
}

TEST(SerialQueueTest, WithoutTasksHasNoThreadAndMayGo) {
    const SerialQueue queue("idle");
    EXPECT_FALSE(queue.isCurrent());
}

} // namespace KeloAPI
