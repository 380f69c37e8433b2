#include "support/MainLoop.hpp"
#include "support/ScriptedSession.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

constexpr const char* expired = R"({"error": "expired", "code": 103})";
constexpr const char* success = R"({"data": {}})";

/// What happens when the service wants the user to sign in again or to solve a captcha.
class EndpointRetryTest : public testing::ScriptedSessionTest {
protected:
    void send(const std::string& name) {
        endpoint->request(std::make_shared<KLEmptyParser>(),
                          [this, name](std::vector<std::shared_ptr<KLEmpty>>,
                                       std::optional<Metadata>, const Timeline&,
                                       std::optional<Error> error) {
                              const auto code = error ? std::to_string(error->code()) : "ok";
                              events.push_back(name + " " + code);
                          });
    }
    void answer(const std::string& body) { transport->answer(ScriptedAnswer::json(body)); }
    /// Sends a call that is answered thus, and waits for its completion.
    void sendAnswered(const std::string& body) {
        const std::size_t before = events.size();
        answer(body);
        send("call");
        ASSERT_TRUE(eventsReach(before + 1));
    }
    /// Releases what is queued, answers the retry thus, and waits for its completion.
    void releaseAnswered(const std::string& body) {
        const std::size_t before = events.size();
        answer(body);
        session->handleQueuedRetries(true);
        ASSERT_TRUE(eventsReach(before + 1));
    }
    bool eventsReach(std::size_t count) {
        return runUntil([&] { return events.size() >= count; });
    }

    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
    std::vector<std::string> events;
};

TEST_F(EndpointRetryTest, Codes100And103AreHandedOverBeforeTheCompletionHears) {
    delegate->onReauth = [this](Session&) { events.emplace_back("reauth"); };
    answer(R"({"error": "sign in", "code": 100})");
    send("first");
    ASSERT_TRUE(eventsReach(2));
    answer(expired);
    send("second");
    ASSERT_TRUE(eventsReach(4));
    EXPECT_EQ(events, (std::vector<std::string>{"reauth", "first 100", "reauth", "second 103"}));
    EXPECT_EQ(session->queuedRetryCount(), 2U);
}

TEST_F(EndpointRetryTest, TheRetryIsSentWithTheValuesOfThenAndCompletesASecondTime) {
    delegate->sessionKey = "old";
    sendAnswered(expired);
    delegate->sessionKey = "new";
    endpoint->setPath("later");
    releaseAnswered(success);
    EXPECT_EQ(events, (std::vector<std::string>{"call 103", "call ok"}));
    const auto requests = transport->requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].headerFields.at("kelo-session-id"), "old");
    EXPECT_EQ(requests[1].headerFields.at("kelo-session-id"), "new");
    EXPECT_EQ(requests[1].url->path(), "/later");
}

TEST_F(EndpointRetryTest, ADelegateMayReleaseTheQueueInsideItsOwnCallback) {
    delegate->onReauth = [this](Session& asked) {
        answer(success);
        asked.handleQueuedRetries(true);
        events.push_back("sent " + std::to_string(transport->requests().size()));
    };
    answer(expired);
    send("call");
    ASSERT_TRUE(eventsReach(3));
    // The retry is on its way before the first completion hears of the failure.
    EXPECT_EQ(events, (std::vector<std::string>{"sent 2", "call 103", "call ok"}));
}

TEST_F(EndpointRetryTest, ARetryThatFailsAgainIsQueuedAgain) {
    sendAnswered(expired);
    session->handleQueuedRetries(true);
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    answer(expired);
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(session->queuedRetryCount(), 1U);
    EXPECT_EQ(delegate->reauthCount, 2);
}

TEST_F(EndpointRetryTest, AQueuedRetryKeepsItsEndpointAlive) {
    sendAnswered(expired);
    const std::weak_ptr<Endpoint> watched = endpoint;
    endpoint.reset();
    EXPECT_FALSE(watched.expired());
    releaseAnswered(success);
    EXPECT_TRUE(runUntil([&] { return watched.expired(); }));
}

TEST_F(EndpointRetryTest, ACaptchaWithoutURLIsOnlyNoted) {
    delegate->handlesCaptcha = true;
    sendAnswered(R"({"error": "captcha", "code": 419, "data": "no url"})");
    EXPECT_TRUE(delegate->captchaUrls.empty());
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    EXPECT_EQ(lines.back(), "got captcha error but no url supplied!");
}

TEST_F(EndpointRetryTest, OtherCodesAreTheCallersOwnBusiness) {
    for (const int code : {0, 1, 99, 101, 230, 418, 420}) {
        sendAnswered(R"({"error": "no", "code": )" + std::to_string(code) + "}");
        EXPECT_EQ(events.back(), "call " + std::to_string(code));
    }
    EXPECT_EQ(delegate->reauthCount, 0);
    EXPECT_EQ(session->queuedRetryCount(), 0U);
}

} // namespace KeloAPI
