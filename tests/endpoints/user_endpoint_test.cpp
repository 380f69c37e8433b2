#include "support/MainLoop.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/UserEndpoint.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class UserEndpointTest : public testing::RegistrySessionTest {
protected:
    UserResult follow(bool following, const std::string& body) {
        std::optional<UserResult> outcome;
        transport->answer(ScriptedAnswer::json(body));
        endpoint->setFollowingOnTwitter(following,
                                        [&](const UserResult& result) { outcome = result; });
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        return *outcome;
    }

    std::shared_ptr<UserEndpoint> endpoint = UserEndpoint::create("123");
};

TEST_F(UserEndpointTest, WhatTheAnswerHoldsIsIgnored) {
    EXPECT_TRUE(follow(true, R"({"data": {"anything": [1, 2]}})").success());
    EXPECT_TRUE(follow(true, R"({"data": {"records": [{}, {"x": 1}]}})").success());
    EXPECT_TRUE(follow(true, R"({"data": []})").error());
}

TEST_F(UserEndpointTest, AppliesTheDefaultDelegateToTheSession) {
    session->setDelegate(nullptr);
    UserEndpoint::create("123");
    EXPECT_EQ(session->delegate(), delegate);
}

TEST_F(UserEndpointTest, MayUseAnotherSession) {
    const auto other = std::make_shared<Session>(SessionType::UnAuthenticated);
    EXPECT_EQ(UserEndpoint::create(other, "5")->session(), other);
    EXPECT_EQ(endpoint->session(), session);
    EXPECT_EQ(endpoint->userId(), "123");
    EXPECT_TRUE(endpoint->parameters().empty());
}

TEST_F(UserEndpointTest, MadeOfASessionAloneItHasNoUser) {
    endpoint = UserEndpoint::create(session);
    EXPECT_EQ(endpoint->session(), session);
    EXPECT_EQ(endpoint->userId(), "");
    EXPECT_TRUE(follow(true, R"({"data": {}})").success());
    EXPECT_EQ(lastRequest().url->absoluteString(),
              "https://service.example/users//follow-on-twitter");
}

TEST_F(UserEndpointTest, Codes230And231CountAsSuccessAndOthersArePassedOn) {
    for (const int code : {-1, 0, 100, 229, 230, 231, 232}) {
        const auto result =
            follow(true, R"({"error": "no", "code": )" + std::to_string(code) + "}");
        const bool succeeds = code == 230 || code == 231;
        ASSERT_EQ(result.success() != nullptr, succeeds) << code;
        EXPECT_EQ(succeeds ? code : result.error()->code(), code);
    }
    EXPECT_EQ(delegate->reauthCount, 1);
}

TEST_F(UserEndpointTest, ARefusedSessionIsHandedOverBeforeTheCompletion) {
    std::vector<std::string> events;
    delegate->onReauth = [&](Session&) { events.emplace_back("delegate"); };
    transport->answer(ScriptedAnswer::json(R"({"error": "no", "code": 103})"));
    transport->answer(ScriptedAnswer::json(R"({"error": "already", "code": 230})"));
    endpoint->setFollowingOnTwitter(true, [&](const UserResult& result) {
        events.emplace_back(result.success() ? "success" : "error");
    });
    ASSERT_TRUE(runUntil([&] { return events.size() == 2; }));
    session->handleQueuedRetries(true);
    ASSERT_TRUE(runUntil([&] { return events.size() == 3; }));
    EXPECT_EQ(events, (std::vector<std::string>{"delegate", "error", "success"}));
}

TEST_F(UserEndpointTest, OnlyTheServicesStatusCodeCounts) {
    // An error of another domain may have the same number.
    transport->answer(ScriptedAnswer::failure(Error("KeloAPI.HTTP", 230)));
    std::optional<UserResult> outcome;
    endpoint->setFollowingOnTwitter(true, [&](const UserResult& result) { outcome = result; });
    ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
    EXPECT_TRUE(outcome->error());
}

} // namespace KeloAPI
