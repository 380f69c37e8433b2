#include "support/RecordingDelegate.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/Settings.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::RecordingDelegate;

class SessionTest : public ::testing::Test {
protected:
    EndpointRetry retry(int number) {
        return [this, number] { ran.push_back(number); };
    }

    std::shared_ptr<Session> session = std::make_shared<Session>(SessionType::Authenticated);
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
    URL captcha = *URL::parse("https://service.example/captcha");
    std::vector<int> ran;
};

static_assert(!std::is_default_constructible_v<Session>);
static_assert(Session::certificatePinningEnabled);

TEST_F(SessionTest, WithoutADelegateOrItsAnswersHasTheDefaults) {
    for (const auto& asked : {std::shared_ptr<RecordingDelegate>(), delegate}) {
        session->setDelegate(asked);
        EXPECT_EQ(session->delegate(), asked);
        EXPECT_EQ(session->host(), Settings::apiHost);
        EXPECT_EQ(session->schema(), "https://");
        EXPECT_EQ(session->sessionId(), std::nullopt);
        EXPECT_EQ(session->acceptLanguage(), std::nullopt);
        EXPECT_EQ(session->userAgent(), std::nullopt);
        EXPECT_EQ(session->keloClient(), std::nullopt);
        EXPECT_FALSE(session->polling());
    }
    EXPECT_EQ(delegate->askedBy.back(), session.get());
}

TEST_F(SessionTest, DoesNotKeepItsDelegateAlive) {
    session->setDelegate(delegate);
    delegate->host = "one.example";
    delegate.reset();
    EXPECT_EQ(session->delegate(), nullptr);
    EXPECT_EQ(session->host(), Settings::apiHost);
}

TEST_F(SessionTest, MakesItsManagerOnce) {
    EXPECT_NE(session->sessionManager(), nullptr);
    EXPECT_EQ(session->sessionManager(), session->sessionManager());
}

TEST_F(SessionTest, WithoutAManagerItStopsTheProcess) {
    EXPECT_DEATH(session->setSessionManager(nullptr),
                 "^KeloAPI: contract violated: a session needs a manager\n$");
}

TEST_F(SessionTest, ReauthenticationQueuesBeforeItTellsTheDelegate) {
    session->setDelegate(delegate);
    std::size_t queuedWhenTold = 0;
    delegate->onReauth = [&](Session& asked) {
        EXPECT_EQ(&asked, session.get());
        queuedWhenTold = asked.queuedRetryCount();
    };
    session->endpointRequiresAuth(endpoint, retry(1));
    EXPECT_EQ(delegate->reauthCount, 1);
    EXPECT_EQ(queuedWhenTold, 1U);
}

TEST_F(SessionTest, ReauthenticationNeedsNeitherDelegateNorRetry) {
    session->endpointRequiresAuth(endpoint, retry(1));
    EXPECT_EQ(session->queuedRetryCount(), 1U);
    session->setDelegate(delegate);
    session->endpointRequiresAuth(endpoint, {});
    EXPECT_EQ(delegate->reauthCount, 1);
    EXPECT_EQ(session->queuedRetryCount(), 1U);
    session->handleQueuedRetries(true);
    EXPECT_EQ(ran, std::vector{1});
}

TEST_F(SessionTest, CaptchaWithoutDelegateOrAnsweredFalseQueuesNothing) {
    session->endpointRequiresCaptcha(endpoint, captcha, retry(1));
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    session->setDelegate(delegate);
    session->endpointRequiresCaptcha(endpoint, captcha, retry(1));
    EXPECT_EQ(delegate->captchaUrls, std::vector{captcha.absoluteString()});
    EXPECT_EQ(session->queuedRetryCount(), 0U);
}

TEST_F(SessionTest, CaptchaAnsweredTrueQueuesAfterwards) {
    session->setDelegate(delegate);
    delegate->handlesCaptcha = true;
    std::size_t queuedWhenAsked = 1;
    delegate->onCaptcha = [&](Session& asked) { queuedWhenAsked = asked.queuedRetryCount(); };
    session->endpointRequiresCaptcha(endpoint, captcha, retry(1));
    EXPECT_EQ(queuedWhenAsked, 0U);
    EXPECT_EQ(session->queuedRetryCount(), 1U);
    session->endpointRequiresCaptcha(endpoint, captcha, {});
    EXPECT_EQ(session->queuedRetryCount(), 1U);
}

TEST_F(SessionTest, RetriesRunInTheOrderTheyWereQueuedEachOnceOrNotAtAll) {
    for (const bool shouldRetry : {false, true}) {
        for (const int number : {1, 2, 3}) {
            session->endpointRequiresAuth(endpoint, retry(number));
        }
        session->handleQueuedRetries(shouldRetry);
        EXPECT_EQ(session->queuedRetryCount(), 0U);
        session->handleQueuedRetries(true);
        session->handleQueuedRetries(false);
        EXPECT_EQ(ran, shouldRetry ? std::vector({1, 2, 3}) : std::vector<int>());
    }
}

TEST_F(SessionTest, RetriesQueuedDuringTheReleaseAreDroppedWithTheRest) {
    session->endpointRequiresAuth(endpoint, [this] {
        ran.push_back(1);
        session->endpointRequiresAuth(endpoint, retry(9));
    });
    session->endpointRequiresAuth(endpoint, retry(2));
    session->handleQueuedRetries(true);
    EXPECT_EQ(ran, (std::vector{1, 2}));
    EXPECT_EQ(session->queuedRetryCount(), 0U);
}

TEST_F(SessionTest, ARetryMayReleaseTheQueueItself) {
    for (const bool shouldRetry : {false, true}) {
        ran.clear();
        session->endpointRequiresAuth(endpoint, [this, shouldRetry] {
            ran.push_back(1);
            session->handleQueuedRetries(shouldRetry);
        });
        session->endpointRequiresAuth(endpoint, retry(2));
        session->handleQueuedRetries(true);
        EXPECT_EQ(ran, (std::vector{1, 2}));
    }
}

TEST_F(SessionTest, ADelegateMayUseTheSessionWhileItsManagerIsMade) {
    class Curious : public RecordingDelegate {
    public:
        std::optional<std::string> hostForSession(Session& asked) override {
            if (++depth == 1) {
                asked.sessionManager();
            }
            return "service.example";
        }
        int depth = 0;
    };
    const auto curious = std::make_shared<Curious>();
    session->setDelegate(curious);
    EXPECT_EQ(session->sessionManager(), session->sessionManager());
    EXPECT_GE(curious->depth, 2);
}

TEST(SessionTypeTest, HashesToItsPosition) {
    EXPECT_EQ(std::hash<SessionType>()(SessionType::Authenticated), 0U);
    EXPECT_EQ(std::hash<SessionType>()(SessionType::UnAuthenticated), 1U);
}

static_assert(!std::is_default_constructible_v<Api> && !std::is_destructible_v<Api>);
static_assert(!std::is_copy_constructible_v<Api>);

/// The registry is the process's one: each test leaves it as it was found.
class ApiTest : public ::testing::Test {
protected:
    ~ApiTest() override {
        Api::setSessionDelegate(nullptr);
        Api::session(SessionType::Authenticated, nullptr);
    }
};

TEST_F(ApiTest, HasOneSessionOfEachType) {
    const auto first = Api::session(SessionType::Authenticated);
    EXPECT_EQ(Api::session(SessionType::Authenticated), first);
    EXPECT_EQ(first->sessionType(), SessionType::Authenticated);
    const auto other = Api::session(SessionType::UnAuthenticated);
    EXPECT_NE(other, first);
    EXPECT_EQ(other->sessionType(), SessionType::UnAuthenticated);
}

TEST_F(ApiTest, ASessionHasTheDelegateOfTheLastCallThatAskedForIt) {
    const auto one = std::make_shared<RecordingDelegate>();
    const auto two = std::make_shared<RecordingDelegate>();
    const auto fallback = std::make_shared<RecordingDelegate>();
    const auto session = Api::session(SessionType::Authenticated, one);
    EXPECT_EQ(session->delegate(), one);
    Api::session(SessionType::Authenticated, two);
    EXPECT_EQ(session->delegate(), two);
    Api::setSessionDelegate(fallback);
    EXPECT_EQ(Api::sessionDelegate(), fallback);
    EXPECT_EQ(session->delegate(), two) << "the default is for calls to come";
    Api::session(SessionType::Authenticated);
    EXPECT_EQ(session->delegate(), fallback);
    Api::session(SessionType::Authenticated, nullptr);
    EXPECT_EQ(session->delegate(), nullptr) << "an explicit null is no default";
}

TEST_F(ApiTest, HoldsItsDelegateAndStartsWithoutOne) {
    EXPECT_EQ(Api::sessionDelegate(), nullptr);
    std::weak_ptr<RecordingDelegate> watched;
    {
        const auto delegate = std::make_shared<RecordingDelegate>();
        watched = delegate;
        Api::setSessionDelegate(delegate);
    }
    EXPECT_FALSE(watched.expired());
    Api::setSessionDelegate(nullptr);
    EXPECT_TRUE(watched.expired());
}

} // namespace KeloAPI
