#include "support/EndpointMaking.hpp"
#include "support/MainLoop.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class RecommendationsEndpointTest : public testing::RegistrySessionTest {
protected:
    RecommendationsEndpoint::Completion noted() {
        return [this](const RecommendationResult& result) { outcome = result; };
    }
    bool ended() {
        return runUntil([&] { return outcome.has_value(); });
    }

    std::shared_ptr<RecommendationsEndpoint> endpoint = RecommendationsEndpoint::create();
    std::optional<RecommendationResult> outcome;
};

static_assert(!testing::createdWith<RecommendationsEndpoint, std::shared_ptr<Session>>);
static_assert(testing::createdWith<RecommendationsEndpoint>);

TEST_F(RecommendationsEndpointTest, WhatTheAnswerHoldsIsIgnored) {
    transport->answer(ScriptedAnswer::json(R"({"data": {"anything": 1}})"));
    endpoint->addPostFeedback("555", RecommendationBoost::Negative, noted());
    ASSERT_TRUE(ended());
    EXPECT_TRUE(outcome->success());
    EXPECT_EQ(outcome->error(), nullptr);
}

TEST_F(RecommendationsEndpointTest, SetsMethodAndEncodingOnceOnly) {
    EXPECT_EQ(endpoint->method(), Method::POST);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::JSON);
    EXPECT_EQ(endpoint->path(), "");
    endpoint->setMethod(Method::PUT);
    endpoint->setParameterEncoding(ParameterEncoding::URL);
    endpoint->addUserFeedback("9", RecommendationBoost::Neutral, {});
    EXPECT_EQ(lastRequest().method, Method::PUT);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::URL);
}

TEST_F(RecommendationsEndpointTest, TheIdentifierStandsInThePathAsGiven) {
    endpoint->addUserFeedback("a/b c?", RecommendationBoost::Neutral, {});
    EXPECT_EQ(endpoint->path(), "recommendations/feedback/users/a/b c?");
    endpoint->addPostFeedback("", RecommendationBoost::Neutral, {});
    EXPECT_EQ(endpoint->path(), "recommendations/feedback/posts/");
}

TEST_F(RecommendationsEndpointTest, UsesTheSignedInSessionWithTheDefaultDelegate) {
    session->setDelegate(nullptr);
    EXPECT_EQ(RecommendationsEndpoint::create()->session(), session);
    EXPECT_EQ(session->delegate(), delegate);
}

TEST_F(RecommendationsEndpointTest, ReportsAnErrorAsFailure) {
    for (const auto& [answer, error] :
         {std::pair(ScriptedAnswer::failure(Error("KeloAPI.HTTP", 5)), 5),
          std::pair(ScriptedAnswer::json(R"({"error": "no", "code": 7})"), 7)}) {
        outcome.reset();
        transport->answer(answer);
        endpoint->addPostFeedback("1", RecommendationBoost::Positive, noted());
        ASSERT_TRUE(ended());
        EXPECT_FALSE(outcome->success());
        EXPECT_EQ(outcome->error()->code(), error);
        EXPECT_EQ(outcome->error()->domain() == "KeloAPI.HTTP", error == 5);
    }
}

TEST_F(RecommendationsEndpointTest, WithoutCompletionSendsAndReportsNothing) {
    for (const char* answer : {R"({"error": "no", "code": 5})", R"({"data": {}})"}) {
        transport->answer(ScriptedAnswer::json(answer));
        auto own = RecommendationsEndpoint::create();
        const std::weak_ptr<RecommendationsEndpoint> watched = own;
        own->addPostFeedback("1", RecommendationBoost::Positive, {});
        own.reset();
        EXPECT_FALSE(watched.expired());
        // A call keeps its endpoint until its answer has been dealt with.
        EXPECT_TRUE(runUntil([&] { return watched.expired(); })) << answer;
        EXPECT_EQ(transport->waitingCount(), 0U);
    }
    EXPECT_EQ(transport->requests().size(), 2U);
}

TEST(RecommendationBoost, IsReadToTheLetter) {
    EXPECT_EQ(recommendationBoostOf("positive"), RecommendationBoost::Positive);
    EXPECT_EQ(recommendationBoostOf("neutral"), RecommendationBoost::Neutral);
    EXPECT_EQ(recommendationBoostOf("negative"), RecommendationBoost::Negative);
    for (const char* text : {"Positive", "", "positive ", "NEGATIVE"}) {
        EXPECT_EQ(recommendationBoostOf(text), std::nullopt) << text;
    }
    EXPECT_EQ(rawValue(RecommendationBoost::Neutral), "neutral");
}

} // namespace KeloAPI
