#include "support/ServiceTest.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

namespace KeloAPI {

using testing::runUntil;
using testing::StandIn;

/// The signed-in user, and what becomes of a session that the service no longer takes.
class MeAtService : public testing::ServiceTest {
protected:
    /// Asks for the user; each completion adds a line to `events`.
    void get(const std::string& name = "me") {
        MeEndpoint::create()->get([this, name](const MeResult& result) {
            events.push_back(name + " " +
                             (result.error() ? std::to_string(result.error()->code())
                                             : result.success()->user->username.value_or("?")));
        });
    }
    bool eventsReach(std::size_t count) {
        return runUntil([&] { return events.size() >= count; });
    }

    std::vector<std::string> events;
};

TEST_F(MeAtService, ReadsTheUser) {
    std::optional<MeResult> outcome;
    MeEndpoint::create()->get([&](const MeResult& result) { outcome = result; });
    ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
    ASSERT_TRUE(outcome->success()) << outcome->error()->description();
    EXPECT_EQ(outcome->success()->user->username, StandIn::username);
    EXPECT_NE(outcome->success()->user->loopData, nullptr);
}

TEST_F(MeAtService, WithoutASessionTheUserHasToSignIn) {
    delegate->sessionKey.reset();
    get();
    ASSERT_TRUE(eventsReach(1));
    EXPECT_EQ(events.front(), "me 100");
    EXPECT_EQ(delegate->reauthCount, 1);
    delegate->sessionKey = service.signIn("mara");
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events.back(), "me mara");
}

TEST_F(MeAtService, AnExpiredSessionIsReplacedAndTheCallSentAgain) {
    get("before");
    ASSERT_TRUE(eventsReach(1));
    service.expire(StandIn::sessionKey);
    get("first");
    get("second");
    ASSERT_TRUE(eventsReach(3));
    EXPECT_EQ(session->queuedRetryCount(), 2U);
    service.requests();
    delegate->sessionKey = service.signIn("mara");
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(5));
    EXPECT_EQ(events[0], "before mara");
    EXPECT_THAT(
        (std::vector(events.begin() + 1, events.end())),
        ::testing::UnorderedElementsAre("first 103", "second 103", "first mara", "second mara"));
    for (const auto& seen : service.requests()) {
        EXPECT_EQ(seen.header("kelo-session-id"), *delegate->sessionKey);
    }
}

TEST_F(MeAtService, ACaptchaIsSolvedAndTheCallSentAgain) {
    const std::string url = service.demandCaptcha(StandIn::sessionKey);
    delegate->handlesCaptcha = true;
    get();
    ASSERT_TRUE(eventsReach(1));
    EXPECT_EQ(delegate->captchaUrls, std::vector<std::string>{url});
    service.solveCaptcha(url);
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events, (std::vector<std::string>{"me 419", "me mara"}));
}

TEST_F(MeAtService, ACaptchaThatNobodySolvesIsDemandedAgain) {
    service.demandCaptcha(StandIn::sessionKey);
    delegate->handlesCaptcha = true;
    get();
    ASSERT_TRUE(eventsReach(1));
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events, (std::vector<std::string>{"me 419", "me 419"}));
    EXPECT_EQ(session->queuedRetryCount(), 1U);
}

} // namespace KeloAPI
