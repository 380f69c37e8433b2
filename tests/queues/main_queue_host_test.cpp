// The main queue under a host's own loop: its file descriptor and its executor.
#include <KeloAPI/queues/MainQueue.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace KeloAPI {

using ::testing::ElementsAre;
using namespace std::chrono_literals;

class MainQueueHostTest : public ::testing::Test {
protected:
    ~MainQueueHostTest() override {
        queue.setExecutor({});
        while (queue.drain() > 0) {
        }
    }

    bool readable(std::chrono::milliseconds timeout = 0ms) {
        pollfd watched{queue.fileDescriptor(), POLLIN, 0};
        return poll(&watched, 1, static_cast<int>(timeout.count())) == 1;
    }

    MainQueue::Task note(int number) {
        return [this, number] { ran.push_back(number); };
    }

    MainQueue& queue = MainQueue::main();
    std::vector<int> ran;
};

using MainQueueHostDeathTest = MainQueueHostTest;

TEST_F(MainQueueHostDeathTest, WithoutADescriptorLeftTheProcessStops) {
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

TEST_F(MainQueueHostTest, TheDescriptorIsReadableWhileTasksWait) {
    queue.async(note(1));
    EXPECT_TRUE(readable()) << "asked for after the post";
    queue.async(note(2));
    EXPECT_TRUE(readable());
    EXPECT_EQ(queue.drain(), 2U);
    EXPECT_FALSE(readable());
    queue.async(note(3));
    EXPECT_TRUE(readable());
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_FALSE(readable());
    EXPECT_EQ(queue.fileDescriptor(), queue.fileDescriptor());
}

TEST_F(MainQueueHostTest, TheDescriptorStaysReadableForTasksOfTasks) {
    queue.fileDescriptor();
    queue.async([this] { queue.async(note(1)); });
    queue.drain();
    EXPECT_TRUE(readable());
    queue.drain();
    EXPECT_FALSE(readable());
}

TEST_F(MainQueueHostTest, TheDescriptorStaysReadableForWhatAStopLeaves) {
    queue.fileDescriptor();
    queue.async([this] { queue.stop(); });
    queue.async(note(2));
    queue.run();
    EXPECT_TRUE(readable());
}

TEST_F(MainQueueHostTest, APollLoopIsWokenByAnotherThread) {
    ASSERT_FALSE(readable());
    std::atomic<int> count = 0;
    std::thread other([&] {
        for (int i = 0; i < 200; ++i) {
            queue.async([&] { ++count; });
        }
    });
    while (count < 200 && readable(20s)) {
        queue.drain();
    }
    other.join();
    EXPECT_EQ(count, 200);
    EXPECT_FALSE(readable());
}

TEST_F(MainQueueHostTest, AnExecutorTakesEveryTask) {
    std::vector<MainQueue::Task> host;
    queue.setExecutor([&](MainQueue::Task task) { host.push_back(std::move(task)); });
    queue.async(note(1));
    queue.async(note(2));
    EXPECT_EQ(queue.drain(), 0U);
    ASSERT_EQ(host.size(), 2U);
    EXPECT_TRUE(ran.empty());
    for (auto& task : host) {
        task();
    }
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(MainQueueHostTest, AnExecutorGetsWhatWaitsAtOnce) {
    queue.async(note(1));
    queue.async(note(2));
    ASSERT_TRUE(readable());
    std::vector<MainQueue::Task> host;
    queue.setExecutor([&](MainQueue::Task task) { host.push_back(std::move(task)); });
    EXPECT_EQ(host.size(), 2U);
    EXPECT_EQ(queue.drain(), 0U);
    EXPECT_FALSE(readable()) << "nothing waits here any more: a poll loop must not spin";
    queue.setExecutor({});
    queue.async(note(3));
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_THAT(ran, ElementsAre(3));
}

TEST_F(MainQueueHostTest, AnExecutorMaySetItselfAsideInsideATask) {
    std::vector<MainQueue::Task> host;
    queue.async(
        [&] { queue.setExecutor([&](MainQueue::Task task) { host.push_back(std::move(task)); }); });
    queue.async(note(2));
    EXPECT_EQ(queue.drain(), 1U);
    ASSERT_EQ(host.size(), 1U);
    host.front()();
    EXPECT_THAT(ran, ElementsAre(2));
}

TEST_F(MainQueueHostTest, TheOrderHoldsWhileAnExecutorComes) {
    for (int round = 0; round < 20; ++round) {
        constexpr int count = 500;
        std::mutex mutex;
        std::vector<int> order;
        std::thread other([&] {
            for (int i = 0; i < count; ++i) {
                queue.async([&order, i] { order.push_back(i); });
            }
        });
        std::this_thread::sleep_for(100us);
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
