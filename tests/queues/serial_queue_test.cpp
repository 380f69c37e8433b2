// The serial queue, and what it has in common with the main one.
#include "support/MainLoop.hpp"
#include "support/OwnProcess.hpp"
#include "support/Sanitizers.hpp"
#include "support/Shortage.hpp"

#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/queues/MainQueue.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <set>
#include <thread>

namespace KeloAPI {

using ::testing::ElementsAre;
using testing::timeLimit;

enum class QueueKind { Main, Serial };

class EitherQueueTest : public ::testing::TestWithParam<QueueKind> {
protected:
    void async(MainQueue::Task task) {
        GetParam() == QueueKind::Main ? MainQueue::main().async(std::move(task))
                                      : serial.async(std::move(task));
    }
    /// Waits until the tasks posted so far have run.
    void flush() {
        std::atomic<bool> done = false;
        async([&] { done = true; });
        ASSERT_TRUE(testing::runUntil([&] { return done.load(); }));
    }

    SerialQueue serial{"either"};
};

INSTANTIATE_TEST_SUITE_P(Queues, EitherQueueTest,
                         ::testing::Values(QueueKind::Main, QueueKind::Serial),
                         [](const auto& kind) {
                             return kind.param == QueueKind::Main ? "Main" : "Serial";
                         });

TEST_P(EitherQueueTest, KeepsTheOrderOfEachPostingThreadAndRunsOnOne) {
    constexpr int perThread = 2000;
    std::vector<std::pair<int, int>> seen;
    std::set<std::thread::id> ranOn;
    std::atomic<std::size_t> count = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < perThread; ++i) {
                async([&, thread, i] {
                    seen.emplace_back(thread, i);
                    ranOn.insert(std::this_thread::get_id());
                    ++count;
                });
            }
        });
    }
    EXPECT_TRUE(testing::runUntil([&] { return count == 4U * perThread; }));
    for (auto& thread : threads) {
        thread.join();
    }
    ASSERT_EQ(seen.size(), 4U * perThread);
    int next[4] = {};
    for (const auto& [thread, i] : seen) {
        EXPECT_EQ(i, next[thread]++);
    }
    EXPECT_EQ(ranOn.size(), 1U);
    EXPECT_EQ(ranOn.contains(std::this_thread::get_id()), GetParam() == QueueKind::Main);
}

TEST_P(EitherQueueTest, ATaskPostedByATaskRunsAfterIt) {
    std::vector<int> order;
    async([&] {
        async([&] { order.push_back(2); });
        order.push_back(1);
    });
    flush();
    flush();
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST_P(EitherQueueTest, LetsATaskGoBeforeTheNextOneRuns) {
    auto captured = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = captured;
    bool gone = false;
    async([captured = std::move(captured)] {});
    async([&] { gone = watch.expired(); });
    flush();
    EXPECT_TRUE(gone);
}

namespace {

/// Waits until the tasks posted so far have run.
void flush(SerialQueue& queue) {
    std::promise<void> done;
    queue.async([&] { done.set_value(); });
    ASSERT_EQ(done.get_future().wait_for(timeLimit), std::future_status::ready);
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
            std::exit(opened && waited.get_future().wait_for(timeLimit) == std::future_status::ready
                          ? 0
                          : 2);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(SerialQueueTest, KnowsAndNamesItsOwnThread) {
    SerialQueue queue("a label of more than fifteen bytes");
    SerialQueue other("other");
    flush(other);
    EXPECT_FALSE(queue.isCurrent()) << "no thread yet";
    bool inside = false;
    bool insideOther = true;
    char name[32] = {};
    queue.async([&] {
        inside = queue.isCurrent();
        insideOther = other.isCurrent();
        pthread_getname_np(pthread_self(), name, sizeof name);
    });
    flush(queue);
    EXPECT_TRUE(inside);
    EXPECT_FALSE(insideOther);
    EXPECT_FALSE(queue.isCurrent());
    if (System::canNameThreads()) {
        EXPECT_STREQ(name, "a label of more");
    }
}

TEST(SerialQueueTest, GivesTheMainQueueNothingWhereItHasAThread) {
    SerialQueue queue("own");
    EXPECT_TRUE(queue.open());
    EXPECT_TRUE(queue.open());
    bool wasInside = false;
    queue.asyncOrOnMain([&] { wasInside = queue.isCurrent(); });
    flush(queue);
    EXPECT_TRUE(wasInside);
    EXPECT_EQ(MainQueue::main().drain(), 0U);
}

TEST(SerialQueueTest, HasNoThreadInAForkedChild) {
    if (testing::isSanitized) {
        GTEST_SKIP() << "sanitizers lose their own threads in a child";
    }
    SerialQueue queue("parent's");
    flush(queue);
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        bool ranOnMain = false;
        queue.async([] { _exit(1); });
        queue.asyncOrOnMain([&] { ranOnMain = true; });
        MainQueue::main().drain();
        _exit(queue.isInherited() && !queue.open() && ranOnMain ? 0 : 2);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(queue.isInherited());
    flush(queue);
}

TEST(SerialQueueTest, ItsThreadEndsWithIt) {
    if (!System::canNameThreads()) {
        GTEST_SKIP() << "nothing tells its thread from the others";
    }
    const auto isThere = [] { return testing::threadNames().contains("mortal"); };
    {
        SerialQueue queue("mortal");
        flush(queue);
        EXPECT_TRUE(isThere());
    }
    EXPECT_TRUE(testing::eventually([&] { return !isThere(); }));
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
    ASSERT_EQ(result.wait_for(timeLimit), std::future_status::ready);
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
    ASSERT_EQ(done.get_future().wait_for(timeLimit), std::future_status::ready);
    EXPECT_TRUE(watch.expired());
}

TEST(SerialQueueTest, MayGoWithTheCaptureOfItsLastTask) {
    struct Owner {
        std::shared_ptr<SerialQueue> queue;
        std::promise<std::thread::id>* gone = nullptr;
        ~Owner() { gone->set_value(std::this_thread::get_id()); }
    };
    // Often, because the thread that posts must not be the last to hold the capture.
    for (int round = 0; round < 200; ++round) {
        std::promise<std::thread::id> gone;
        auto result = gone.get_future();
        auto owner = std::make_shared<Owner>();
        owner->queue = std::make_shared<SerialQueue>("capture");
        owner->gone = &gone;
        SerialQueue* const queue = owner->queue.get();
        queue->async([owner = std::move(owner)] {});
        ASSERT_EQ(result.wait_for(timeLimit), std::future_status::ready);
        ASSERT_NE(result.get(), std::this_thread::get_id());
    }
}

} // namespace KeloAPI
