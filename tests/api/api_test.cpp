#include "support/RecordingDelegate.hpp"

#include <KeloAPI/api/Api.hpp>

#include <gtest/gtest.h>

#include <thread>

namespace KeloAPI {

using testing::RecordingDelegate;

TEST(Api, HasOneSessionOfEachType) {
    const auto first = Api::session(SessionType::Authenticated);
    EXPECT_EQ(Api::session(SessionType::Authenticated), first);
    EXPECT_EQ(first->sessionType(), SessionType::Authenticated);
    const auto other = Api::session(SessionType::UnAuthenticated);
    EXPECT_NE(other, first);
    EXPECT_EQ(other->sessionType(), SessionType::UnAuthenticated);
}

TEST(Api, TheSecondCallsDelegateReplacesTheFirst) {
    const auto one = std::make_shared<RecordingDelegate>();
    const auto two = std::make_shared<RecordingDelegate>();
    const auto session = Api::session(SessionType::Authenticated, one);
    EXPECT_EQ(session->delegate(), one);
    EXPECT_EQ(Api::session(SessionType::Authenticated, two)->delegate(), two);
}

TEST(Api, AnExplicitNullDelegateClearsWhereNoneWouldApplyTheDefault) {
    const auto fallback = std::make_shared<RecordingDelegate>();
    Api::setSessionDelegate(fallback);
    EXPECT_EQ(Api::session(SessionType::Authenticated)->delegate(), fallback);
    EXPECT_EQ(Api::session(SessionType::Authenticated, nullptr)->delegate(), nullptr);
    EXPECT_EQ(Api::session(SessionType::Authenticated)->delegate(), fallback);
}

TEST(Api, ChangingTheDefaultDelegateLeavesExistingSessionsAlone) {
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

TEST(Api, HoldsItsDelegateAndStartsWithoutOne) {
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
