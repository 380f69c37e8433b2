#include "FileQueueTest.hpp"

#include <gmock/gmock.h>

#include <map>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileQueueOrderTest : public testing::FileQueueTest {};

TEST_F(FileQueueOrderTest, RunsOneAfterAnother) {
    request("a");
    request("b");
    request("c");
    EXPECT_EQ(order(), "a b c");
    EXPECT_EQ(sent(), "a");
    finish(0);
    EXPECT_EQ(order(), "b c");
    EXPECT_EQ(sent(), "a b");
    finish(1);
    finish(2);
    EXPECT_EQ(order(), "");
    EXPECT_EQ(sent(), "a b c");
    EXPECT_THAT(answers, ElementsAre("a", "b", "c"));
    EXPECT_EQ(folder.read("c"), "video");
}

TEST_F(FileQueueOrderTest, PutsAHighRequestInFrontOfTheRunningDownload) {
    request("a");
    request("b", QueuePriority::Low);
    request("c", QueuePriority::High);
    EXPECT_EQ(order(), "c a b");
    EXPECT_EQ(sent(), "a") << "the running download is not interrupted";
    finish(0);
    EXPECT_EQ(sent(), "a c");
    EXPECT_EQ(order(), "c b");
    finish(1);
    EXPECT_EQ(sent(), "a c b");
}

TEST_F(FileQueueOrderTest, IsLowWithoutAPriority) {
    request("a");
    request("b");
    queue->download(file("c"), place("c"), [](const FileDownloadResult&) {});
    settle();
    request("d");
    EXPECT_EQ(order(), "a b d c");
}

TEST_F(FileQueueOrderTest, MovesAFileThatIsRequestedAgain) {
    request("a");
    request("b");
    request("c", QueuePriority::Low);
    request("d", QueuePriority::Low);
    request("d", QueuePriority::High);
    EXPECT_EQ(order(), "d a b c");
    request("b", QueuePriority::Low);
    EXPECT_EQ(order(), "d a c b") << "down as well as up";
    request("a");
    EXPECT_EQ(order(), "d a c b") << "behind all of its priority";
}

TEST_F(FileQueueOrderTest, AnswersEveryRequestOfAFileOnce) {
    request("a");
    request("b");
    request("a", QueuePriority::High);
    EXPECT_EQ(order(), "a b");
    EXPECT_EQ(sent(), "a") << "no second download starts where others wait";
    finish(0);
    EXPECT_THAT(answers, ElementsAre("a", "a"));
    EXPECT_EQ(sent(), "a b");
    finish(1);
    EXPECT_THAT(answers, ElementsAre("a", "a", "b"));
}

TEST_F(FileQueueOrderTest, StartsTheSoleFileAgain) {
    request("a");
    request("a");
    EXPECT_EQ(sent(), "a a");
    EXPECT_EQ(order(), "a");
    request("b");
    request("c");
    finish(0);
    EXPECT_THAT(answers, ElementsAre("a", "a")) << "the first to end answers all";
    EXPECT_EQ(sent(), "a a b");
    finish(1);
    EXPECT_THAT(answers, ElementsAre("a", "a"));
    EXPECT_EQ(sent(), "a a b b") << "the second starts whatever is first, running or not";
    finish(2);
    EXPECT_EQ(sent(), "a a b b c");
    finish(3);
    EXPECT_EQ(sent(), "a a b b c c");
    EXPECT_THAT(answers, ElementsAre("a", "a", "b"));
}

TEST_F(FileQueueOrderTest, TakesTheLatestDestination) {
    request("a");
    request(file("b"), place("first"), QueuePriority::Normal);
    request(file("b"), place("second"), QueuePriority::Low);
    finish(0);
    finish(1);
    EXPECT_EQ(folder.read("second"), "video");
    EXPECT_THAT(folder.names(), ElementsAre("a", "second"));
}

TEST_F(FileQueueOrderTest, KeepsARunningDownloadsDestination) {
    request(file("a"), place("first"), QueuePriority::Normal);
    request("b");
    request(file("a"), place("second"), QueuePriority::Normal);
    EXPECT_EQ(order(), "b a") << "it goes behind its like, though it runs";
    finish(0);
    EXPECT_THAT(folder.names(), ElementsAre("first"));
    EXPECT_THAT(answers, ElementsAre("a", "a"));
}

TEST_F(FileQueueOrderTest, ForgetsAPriorityWithTheNextRequestOnly) {
    request("a", QueuePriority::High);
    finish(0, {.statusCode = 500});
    request("b");
    request("a", QueuePriority::Low);
    EXPECT_EQ(order(), "b a") << "the priority of long ago plays no part";
}

TEST_F(FileQueueOrderTest, GoesOnAfterAFailure) {
    request("a");
    request("b");
    finish(0, ScriptedAnswer::failure(Error("test", 1)));
    finish(1);
    EXPECT_THAT(answers, ElementsAre("a failed", "b"));
}

TEST_F(FileQueueOrderTest, AgreesWithTheRuleForAnyRow) {
    // The rule as it is told: before the first queued file of a lower priority.
    const std::string names = "bcdefghij";
    std::vector<std::string> expected = {"a"};
    std::map<std::string, QueuePriority> priorities = {{"a", QueuePriority::Normal}};
    request("a");
    unsigned number = 1;
    for (int i = 0; i < 200; ++i) {
        number = number * 1103515245U + 12345U;
        const std::string name(1, names[(number >> 16U) % names.size()]);
        const auto priority = *queuePriorityOf((number >> 8U) % 3);
        std::erase(expected, name);
        const auto lower = std::find_if(expected.begin(), expected.end(), [&](const auto& queued) {
            return priorities.at(queued) < priority;
        });
        expected.insert(lower, name);
        priorities[name] = priority;
        request(name, priority);
        std::string text;
        for (const auto& one : expected) {
            text += (text.empty() ? "" : " ") + one;
        }
        ASSERT_EQ(order(), text) << "after request " << i;
    }
    EXPECT_EQ(sent(), "a");
}

TEST_F(FileQueueOrderTest, DropsEverythingWhenKilled) {
    request("a");
    request("b");
    request("c");
    queue->kill();
    EXPECT_EQ(order(), "");
    finish(0);
    EXPECT_EQ(sent(), "a") << "nothing follows";
    EXPECT_THAT(answers, IsEmpty());
    EXPECT_EQ(folder.read("a"), "video") << "the running download went on to its end";
}

TEST_F(FileQueueOrderTest, WorksOnAfterItWasKilled) {
    request("a");
    queue->kill();
    request("b");
    EXPECT_EQ(sent(), "a b");
    finish(1);
    EXPECT_THAT(answers, ElementsAre("b"));
}

} // namespace KeloAPI
