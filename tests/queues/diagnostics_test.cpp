#include <KeloAPI/queues/Diagnostics.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace KeloAPI {

class DiagnosticsTest : public ::testing::Test {
protected:
    ~DiagnosticsTest() override { Diagnostics::setSink({}); }
};

TEST_F(DiagnosticsTest, GoToStandardOutputLineByLine) {
    ::testing::internal::CaptureStdout();
    Diagnostics::write("first");
    Diagnostics::write("");
    Diagnostics::write(std::string_view("third line").substr(0, 5));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "first\n\nthird\n");
}

TEST_F(DiagnosticsTest, GoToTheSinkInstead) {
    std::vector<std::string> lines;
    Diagnostics::setSink([&](std::string_view line) { lines.emplace_back(line); });
    ::testing::internal::CaptureStdout();
    Diagnostics::write("to the sink");
    Diagnostics::setSink({});
    Diagnostics::write("to the output again");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "to the output again\n");
    EXPECT_THAT(lines, ::testing::ElementsAre("to the sink"));
}

TEST_F(DiagnosticsTest, AreOneLineEachWhateverIsInThem) {
    std::vector<std::string> lines;
    Diagnostics::setSink([&](std::string_view line) { lines.emplace_back(line); });
    Diagnostics::write("a file \"a\r\nb\"");
    Diagnostics::write(std::string_view("\x1B[2J\0\x7F", 6));
    Diagnostics::write("na\xC3\xAFve \\x0A");
    EXPECT_THAT(lines, ::testing::ElementsAre("a file \"a\\x0D\\x0Ab\"", "\\x1B[2J\\x00\\x7F",
                                              "na\xC3\xAFve \\\\x0A"));
}

TEST_F(DiagnosticsTest, ASinkThatGoesMayWriteALastLine) {
    std::vector<std::string> lines;
    struct Last {
        ~Last() { Diagnostics::write("gone"); }
    };
    Diagnostics::setSink([last = std::make_shared<Last>()](std::string_view) {});
    Diagnostics::setSink([&](std::string_view line) { lines.emplace_back(line); });
    EXPECT_THAT(lines, ::testing::ElementsAre("gone"));
}

TEST_F(DiagnosticsTest, TheSinkHearsOneCallAtATimeAndNoneAfterItsReplacement) {
    std::atomic<int> inside = 0;
    std::atomic<bool> overlapped = false;
    std::atomic<bool> alive = true;
    std::atomic<bool> heardAfterwards = false;
    std::atomic<bool> stop = false;
    Diagnostics::setSink([&](std::string_view) {
        overlapped = overlapped || inside++ != 0;
        heardAfterwards = heardAfterwards || !alive;
        --inside;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < 100'000 && !stop; ++line) {
                Diagnostics::write("line");
            }
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    Diagnostics::setSink([](std::string_view) {});
    alive = false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    stop = true;
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(overlapped);
    EXPECT_FALSE(heardAfterwards);
}

} // namespace KeloAPI
