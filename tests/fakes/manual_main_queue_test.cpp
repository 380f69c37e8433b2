#include "support/FixedRequest.hpp"
#include "support/TimeLimit.hpp"

#include <KeloAPI/fakes/ManualMainQueue.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <semaphore>
#include <stdexcept>
#include <thread>

namespace KeloAPI::testing {

using fakes::ManualMainQueue;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ManualMainQueueTest : public ::testing::Test {
protected:
    void post(int number) {
        MainQueue::main().async([this, number] { done.push_back(number); });
    }

    std::vector<int> done;
};

TEST_F(ManualMainQueueTest, RunsOneTaskAfterAnother) {
    post(0);
    ManualMainQueue queue;
    post(1);
    post(2);
    EXPECT_EQ(queue.waitingCount(), 3U);
    EXPECT_EQ(MainQueue::main().drain(), 0U);
    EXPECT_TRUE(queue.runNext());
    EXPECT_THAT(done, ElementsAre(0));
    EXPECT_TRUE(queue.runNext());
    EXPECT_TRUE(queue.runNext());
    EXPECT_THAT(done, ElementsAre(0, 1, 2));
    EXPECT_FALSE(queue.runNext(0ms));
    queue.requireEmpty();
}

TEST_F(ManualMainQueueTest, RunsAllWithWhatTheyPost) {
    ManualMainQueue queue;
    post(1);
    MainQueue::main().async([this] { post(3); });
    post(2);
    EXPECT_EQ(queue.runAll(), 4U);
    EXPECT_EQ(queue.runAll(), 0U);
    EXPECT_THAT(done, ElementsAre(1, 2, 3));
}

TEST_F(ManualMainQueueTest, RunsUntilSomethingIsSoAndNoFurther) {
    ManualMainQueue queue;
    post(1);
    post(2);
    post(3);
    const auto hasTwo = [this] { return done.size() == 2; };
    EXPECT_TRUE(queue.runUntil(hasTwo));
    EXPECT_TRUE(queue.runUntil(hasTwo));
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_FALSE(queue.runUntil([] { return false; }, 1ms));
    EXPECT_THAT(done, ElementsAre(1, 2, 3));
}

TEST_F(ManualMainQueueTest, WaitsForTasksOfOtherThreads) {
    ManualMainQueue queue;
    std::binary_semaphore isWanted{1};
    std::thread thread([&] {
        for (int number = 0; number < 100; ++number) {
            ASSERT_TRUE(isWanted.try_acquire_for(timeLimit));
            MainQueue::main().async([&, number] {
                done.push_back(number);
                isWanted.release();
            });
        }
    });
    // Each is posted when the queue has none left; it may be waiting already.
    EXPECT_TRUE(queue.runUntil([this] { return done.size() == 100; }, timeLimit));
    thread.join();
    queue.requireEmpty();
}

TEST_F(ManualMainQueueTest, RunsNothingInsideATask) {
    ManualMainQueue queue;
    bool ran = true;
    MainQueue::main().async([&] { ran = queue.runNext() || queue.runAll() > 0; });
    post(1);
    EXPECT_TRUE(queue.runNext());
    EXPECT_FALSE(ran);
    EXPECT_THAT(done, IsEmpty());
    EXPECT_EQ(queue.runAll(), 1U);
}

TEST_F(ManualMainQueueTest, LeavesWhatWaitsToTheMainQueue) {
    {
        ManualMainQueue queue;
        post(1);
        post(2);
        queue.runNext();
    }
    post(3);
    EXPECT_EQ(MainQueue::main().drain(), 2U);
    EXPECT_THAT(done, ElementsAre(1, 2, 3));
}

TEST_F(ManualMainQueueTest, HoldsACompletionUntilItIsRun) {
    ManualMainQueue queue;
    const auto transport = std::make_shared<fakes::ScriptedTransport>();
    Manager manager(transport);
    transport->answer(fakes::ScriptedAnswer::json("{}"));
    manager.request(FixedRequest())->response([this](const ResponseContent&, Timeline) {
        return [this] { done.push_back(1); };
    });
    EXPECT_TRUE(eventually([&] { return queue.waitingCount() > 0; }));
    EXPECT_THAT(done, IsEmpty());
    EXPECT_TRUE(queue.runNext());
    EXPECT_THAT(done, ElementsAre(1));
}

using ManualMainQueueDeathTest = ManualMainQueueTest;

TEST_F(ManualMainQueueDeathTest, SaysHowManyTasksAreLeft) {
    ManualMainQueue queue;
    post(1);
    post(2);
    EXPECT_DEATH(queue.requireEmpty(), "tasks of the main queue are left: 2");
    queue.runAll();
}

TEST_F(ManualMainQueueDeathTest, ThereIsOne) {
    ManualMainQueue queue;
    EXPECT_DEATH(ManualMainQueue(), "there is a main queue driven by hand already");
}

TEST_F(ManualMainQueueDeathTest, ATaskThatThrowsEndsTheProcess) {
    const auto runThrowing = [] {
        ManualMainQueue queue;
        MainQueue::main().async([] { throw std::runtime_error("thrown by a task"); });
        queue.runNext();
    };
    EXPECT_DEATH(runThrowing(), "thrown by a task");
}

} // namespace KeloAPI::testing
