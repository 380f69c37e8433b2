#include "FileQueueTest.hpp"
#include "support/Words.hpp"

namespace KeloAPI::testing {

/// Some steps, and what holds after them.
struct FileQueueTurn {
    /// "a" requests a file, "a+" with high priority, "a-" with low, "a*" with none; "0" finishes
    /// the download that was sent first, "0!" lets it fail, "0#" answers an error status; "kill"
    /// kills.
    const char* steps;
    const char* order;
    const char* sent;
    const char* answers = "";
};

struct FileQueueScript {
    const char* name;
    std::vector<FileQueueTurn> turns;
};

void PrintTo(const FileQueueScript& script, std::ostream* stream) {
    *stream << script.name;
}

class FileQueueOrderTest : public FileQueueTest,
                           public ::testing::WithParamInterface<FileQueueScript> {
protected:
    void take(const std::string& step) {
        const char mark = step.back();
        if (step == "kill") {
            queue->kill();
        } else if (std::isdigit(step.front()) != 0) {
            finish(static_cast<std::size_t>(step.front() - '0'),
                   mark == '!'   ? fakes::ScriptedAnswer::failure(Error("test", 1))
                   : mark == '#' ? fakes::ScriptedAnswer{.statusCode = 500}
                                 : fakes::ScriptedAnswer{.body = "video"});
        } else if (mark == '*') {
            queue->download(file(step.substr(0, 1)), place(step.substr(0, 1)), noteOf(step));
            settle();
        } else {
            request(step.substr(0, 1), mark == '+'   ? QueuePriority::High
                                       : mark == '-' ? QueuePriority::Low
                                                     : QueuePriority::Normal);
        }
    }
};

TEST_P(FileQueueOrderTest, IsKept) {
    for (const FileQueueTurn& turn : GetParam().turns) {
        SCOPED_TRACE(turn.steps);
        for (const std::string& step : wordsOf(turn.steps)) {
            take(step);
        }
        EXPECT_EQ(order(), turn.order);
        EXPECT_EQ(sent(), turn.sent);
        EXPECT_EQ(joined(answers), turn.answers);
    }
}

const FileQueueScript fileQueueScripts[] = {
    {"OneAfterAnother",
     {{"a b c", "a b c", "a"}, {"0", "b c", "a b", "a"}, {"1 2", "", "a b c", "a b c"}}},
    // The running download is not interrupted.
    {"HighBeforeTheRunningOne",
     {{"a b- c+", "c a b", "a"}, {"0", "c b", "a c", "a"}, {"1", "b", "a c b", "a c"}}},
    {"LowWithoutAPriority", {{"a b c* d", "a b d c", "a"}}},
    // Down as well as up, and behind all of its priority.
    {"MovedWhenRequestedAgain",
     {{"a b c- d- d+", "d a b c", "a"}, {"b-", "d a c b", "a"}, {"a", "d a c b", "a"}}},
    // No second download starts where others wait.
    {"EveryRequestAnsweredOnce",
     {{"a b a+", "a b", "a"}, {"0", "b", "a b", "a a"}, {"1", "", "a b", "a a b"}}},
    // The first to end answers all; the second starts whatever is first, running or not.
    {"TheSoleFileStartsAgain",
     {{"a a", "a", "a a"},
      {"b c", "a b c", "a a"},
      {"0", "b c", "a a b", "a a"},
      {"1", "b c", "a a b b", "a a"},
      {"2", "c", "a a b b c", "a a b"},
      {"3", "c", "a a b b c c", "a a b"}}},
    // The priority of long ago plays no part.
    {"PriorityForgottenWithTheNextRequest",
     {{"a+", "a", "a"}, {"0#", "", "a", "a:failed"}, {"b a-", "b a", "a b", "a:failed"}}},
    {"OnAfterAFailure", {{"a b", "a b", "a"}, {"0! 1", "", "a b", "a:failed b"}}},
    {"NothingAfterItWasKilled", {{"a b c", "a b c", "a"}, {"kill", "", "a"}, {"0", "", "a"}}},
    {"OnAfterItWasKilled", {{"a kill b", "b", "a b"}, {"1", "", "a b", "b"}}},
};

INSTANTIATE_TEST_SUITE_P(Scripts, FileQueueOrderTest, ::testing::ValuesIn(fileQueueScripts),
                         [](const auto& script) { return script.param.name; });

using FileQueuePlaceTest = FileQueueTest;

TEST_F(FileQueuePlaceTest, TakesTheLatestDestination) {
    request("a");
    request(file("b"), place("first"), QueuePriority::Normal);
    request(file("b"), place("second"), QueuePriority::Low);
    finish(0);
    finish(1);
    EXPECT_EQ(folder.read("second"), "video");
    EXPECT_EQ(joined(folder.names()), "a second");
}

TEST_F(FileQueuePlaceTest, KeepsARunningDownloadsDestination) {
    request(file("a"), place("first"), QueuePriority::Normal);
    request("b");
    request(file("a"), place("second"), QueuePriority::Normal);
    EXPECT_EQ(order(), "b a") << "it goes behind its like, though it runs";
    finish(0);
    EXPECT_EQ(joined(folder.names()), "first");
    EXPECT_EQ(joined(answers), "a a");
}

TEST_F(FileQueuePlaceTest, ARunningDownloadGoesOnToItsEndWhenTheQueueIsKilled) {
    request("a");
    queue->kill();
    finish(0);
    EXPECT_EQ(folder.read("a"), "video");
}

TEST_F(FileQueuePlaceTest, AgreesWithTheRuleForAnyRow) {
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
        ASSERT_EQ(order(), joined(expected)) << "after request " << i;
    }
    EXPECT_EQ(sent(), "a");
}

} // namespace KeloAPI::testing
