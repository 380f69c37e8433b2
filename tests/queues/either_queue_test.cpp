// What the main queue and a serial one have in common.
#include "support/MainLoop.hpp"

#include <KeloAPI/queues/MainQueue.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

namespace KeloAPI {

using ::testing::ElementsAre;

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

} // namespace KeloAPI
