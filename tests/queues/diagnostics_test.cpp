#include "support/TimeLimit.hpp"

#include <KeloAPI/queues/Diagnostics.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>
#include <thread>

namespace KeloAPI {

class DiagnosticsTest : public ::testing::Test {
protected:
    ~DiagnosticsTest() override { Diagnostics::setSink({}); }

    void collect() {
        Diagnostics::setSink([this](std::string_view line) { lines.emplace_back(line); });
    }

    std::vector<std::string> lines;
};

TEST_F(DiagnosticsTest, GoToStandardOutputLineByLineWhereThereIsNoSink) {
    ::testing::internal::CaptureStdout();
    Diagnostics::write("first");
    Diagnostics::write("");
    Diagnostics::write(std::string_view("third line").substr(0, 5));
    collect();
    Diagnostics::write("to the sink");
    Diagnostics::setSink({});
    Diagnostics::write("to the output again");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "first\n\nthird\nto the output again\n");
    EXPECT_THAT(lines, ::testing::ElementsAre("to the sink"));
}

TEST_F(DiagnosticsTest, AreOneLineEachWhateverIsInThem) {
    collect();
    Diagnostics::write("a file \"a\r\nb\"");
    Diagnostics::write(std::string_view("\x1B[2J\0\x7F", 6));
    Diagnostics::write("na\xC3\xAFve \\x0A");
    EXPECT_THAT(lines, ::testing::ElementsAre("a file \"a\\x0D\\x0Ab\"", "\\x1B[2J\\x00\\x7F",
                                              "na\xC3\xAFve \\\\x0A"));
}

TEST_F(DiagnosticsTest, ASinkThatGoesMayWriteALastLine) {
    struct Last {
        ~Last() { Diagnostics::write("gone"); }
    };
    Diagnostics::setSink([last = std::make_shared<Last>()](std::string_view) {});
    collect();
    EXPECT_THAT(lines, ::testing::ElementsAre("gone"));
}

TEST_F(DiagnosticsTest, TheSinkHearsOneCallAtATimeAndNoneAfterItsReplacement) {
    std::atomic<int> inside = 0;
    std::atomic<bool> overlapped = false;
    std::atomic<bool> replaced = false;
    std::atomic<bool> heardAfterwards = false;
    std::atomic<bool> stop = false;
    std::binary_semaphore heardMany{0};
    const auto sink = [&](std::atomic<bool>& tooLate) {
        return [&, lines = 0](std::string_view) mutable {
            overlapped = overlapped || inside++ != 0;
            heardAfterwards = heardAfterwards || tooLate;
            if (++lines == 1000) {
                heardMany.release();
            }
            --inside;
        };
    };
    Diagnostics::setSink(sink(replaced));
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                Diagnostics::write("line");
            }
        });
    }
    EXPECT_TRUE(heardMany.try_acquire_for(testing::timeLimit));
    Diagnostics::setSink(sink(stop));
    replaced = true;
    EXPECT_TRUE(heardMany.try_acquire_for(testing::timeLimit));
    Diagnostics::setSink([](std::string_view) {});
    stop = true;
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(overlapped);
    EXPECT_FALSE(heardAfterwards);
}

} // namespace KeloAPI
