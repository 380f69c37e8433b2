#include "support/FixedRequest.hpp"
#include "support/HeardAnswers.hpp"

#include <KeloAPI/fakes/ManualClock.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace KeloAPI::testing {

using fakes::ManualClock;
using fakes::ScriptedAnswer;
using fakes::ScriptedTransport;
using namespace std::chrono_literals;
using ::testing::ElementsAre;

TEST(ManualClockTest, IsTheLibrarysTimeAsLongAsItExists) {
    const Date before = Date::now();
    {
        ManualClock clock(Date(1000s));
        EXPECT_EQ(Date::now(), Date(1000s));
        EXPECT_EQ(clock.now(), Date(1000s));
        clock.advance(1500ms);
        EXPECT_EQ(Date::now(), Date(1001s + 500ms));
        EXPECT_EQ(clock.now(), Date(1001s + 500ms));
        clock.advance(0ms);
        EXPECT_EQ(dateSinceNow(2), Date(1003s + 500ms));
    }
    EXPECT_GE(Date::now(), before);
    EXPECT_EQ(ManualClock().now(), DateFormatter().date("2026-01-01T00:00:00.0"));
}

TEST(ManualClockTest, DrivesTheEstimateOfLoops) {
    ManualClock clock;
    const auto loops = std::make_shared<LoopData>(100, 2.5);
    EXPECT_EQ(loops->loopsSinceCreation(), 0U);
    clock.advance(10s);
    EXPECT_EQ(loops->loopsSinceCreation(), 25U);
}

TEST(ManualClockTest, RunsWhatIsDueInTheOrderOfItsTimeWhileItStandsThere) {
    ManualClock clock(Date(0s));
    std::vector<std::string> done;
    const auto note = [&](const char* what) {
        return [&, what] {
            done.push_back(what + std::to_string(Date::now().time_since_epoch() / 1s));
        };
    };
    clock.after(3s, note("c"));
    clock.after(1s, note("a"));
    clock.after(3s, note("d"));
    clock.after(2s, [&] {
        note("b")();
        clock.after(0s, note("at once "));
        clock.after(5s, note("later "));
    });
    clock.after(4s + 1ms, note("e"));
    clock.advance(4s);
    EXPECT_THAT(done, ElementsAre("a1", "b2", "at once 2", "c3", "d3"));
    clock.advance(3s);
    EXPECT_THAT(std::vector(done.begin() + 5, done.end()), ElementsAre("e4", "later 7"));
    clock.after(std::chrono::milliseconds::max(), note("never"));
    clock.advance(std::chrono::hours(1));
    EXPECT_EQ(done.size(), 7U);
}

TEST(ManualClockTest, ATaskMayLetTimePass) {
    ManualClock clock(Date(0s));
    std::vector<int> done;
    clock.after(1s, [&] {
        clock.advance(5s);
        done.push_back(1);
    });
    clock.after(2s, [&] { done.push_back(2); });
    clock.advance(2s);
    EXPECT_THAT(done, ElementsAre(2, 1));
    EXPECT_EQ(Date::now(), Date(6s));
}

TEST(ManualClockDeathTest, ThereIsOneAndItDoesNotGoBack) {
    ManualClock clock;
    EXPECT_DEATH(ManualClock(), "there is a clock driven by hand already");
    EXPECT_DEATH(clock.advance(-1ms), "time does not go back");
}

class TimedTransportTest : public ::testing::Test {
protected:
    std::shared_ptr<Request> send(std::chrono::milliseconds timeout = 60s) {
        FixedRequest request;
        request.request.timeoutInterval = timeout;
        return answers.listenTo(manager.request(request));
    }
    static ScriptedAnswer delayed(std::chrono::milliseconds delay) {
        ScriptedAnswer answer = ScriptedAnswer::json("{}");
        answer.delay = delay;
        return answer;
    }
    /// Ends one more call, behind whatever has ended before: nothing else has.
    void expectEnded(std::size_t count) {
        const std::size_t index = transport->requests().size();
        send();
        transport->answerRequest(index, {});
        ASSERT_TRUE(answers.waitFor(count + 1));
        EXPECT_EQ(answers.size(), count + 1);
        answers.pop_back();
    }

    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedTransport> transport = std::make_shared<ScriptedTransport>(clock);
    HeardAnswers answers;
    Manager manager{transport};
};

TEST_F(TimedTransportTest, ARequestWithoutAResponseTimesOut) {
    send(5s);
    clock->advance(4999ms);
    expectEnded(0);
    clock->advance(1ms);
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_TRUE(answers[0].failedWith(HTTPErrorCode::TimedOut));
    transport->answer(ScriptedAnswer::json("{}"));
    send();
    ASSERT_TRUE(answers.waitFor(2));
    EXPECT_EQ(answers[1].body, "{}") << "the one that timed out takes no response";
}

TEST_F(TimedTransportTest, AResponseMayTakeItsTime) {
    transport->answer(delayed(3s));
    send(5s);
    EXPECT_EQ(transport->waitingCount(), 0U);
    clock->advance(2s);
    expectEnded(0);
    clock->advance(1s);
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(answers[0].body, "{}");
    EXPECT_EQ(answers[0].timeline.totalDuration(), 3s);
    clock->advance(1h);
    expectEnded(1);
}

TEST_F(TimedTransportTest, AResponseThatTakesTooLongIsTooLate) {
    send(5s);
    transport->answer(delayed(6s));
    const auto cancelled = send(5s);
    transport->answer(delayed(1s));
    cancelled->cancel();
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_TRUE(answers[0].failedWith(HTTPErrorCode::Cancelled));
    clock->advance(10s);
    ASSERT_TRUE(answers.waitFor(2));
    EXPECT_TRUE(answers[1].failedWith(HTTPErrorCode::TimedOut));
    expectEnded(2);
}

TEST(TimedTransportDeathTest, WithoutAClockNothingCanBeLate) {
    const auto transport = std::make_shared<ScriptedTransport>();
    ScriptedAnswer answer;
    answer.delay = 1s;
    transport->answer(answer);
    EXPECT_DEATH(Manager(transport).request(FixedRequest()), "a delayed answer needs a clock");
}

} // namespace KeloAPI::testing
