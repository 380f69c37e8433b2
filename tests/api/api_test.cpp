#include "support/RecordingDelegate.hpp"

#include <KeloAPI/api/Api.hpp>

#include <gtest/gtest.h>

#include <thread>
#include <type_traits>

namespace KeloAPI {

using testing::RecordingDelegate;

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

TEST_F(ApiTest, TheSecondCallsDelegateReplacesTheFirst) {
    const auto one = std::make_shared<RecordingDelegate>();
    const auto two = std::make_shared<RecordingDelegate>();
    const auto session = Api::session(SessionType::Authenticated, one);
    EXPECT_EQ(session->delegate(), one);
    EXPECT_EQ(Api::session(SessionType::Authenticated, two)->delegate(), two);
}

TEST_F(ApiTest, AnExplicitNullDelegateClearsWhereNoneWouldApplyTheDefault) {
    const auto fallback = std::make_shared<RecordingDelegate>();
    Api::setSessionDelegate(fallback);
    EXPECT_EQ(Api::session(SessionType::Authenticated)->delegate(), fallback);
    EXPECT_EQ(Api::session(SessionType::Authenticated, nullptr)->delegate(), nullptr);
    EXPECT_EQ(Api::session(SessionType::Authenticated)->delegate(), fallback);
}

TEST_F(ApiTest, ChangingTheDefaultDelegateLeavesExistingSessionsAlone) {
    const auto one = std::make_shared<RecordingDelegate>();
    const auto two = std::make_shared<RecordingDelegate>();
    Api::setSessionDelegate(one);
    const auto session = Api::session(SessionType::Authenticated);
    Api::setSessionDelegate(two);
    EXPECT_EQ(Api::sessionDelegate(), two);
    EXPECT_EQ(session->delegate(), one);
    Api::session(SessionType::Authenticated);
    EXPECT_EQ(session->delegate(), two);
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
