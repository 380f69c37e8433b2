#include "ActingTest.hpp"

#include <atomic>
#include <chrono>
#include <cmath>

namespace KeloAPI {

using Json = nlohmann::json;
using testing::runUntil;
using testing::SeenRequest;
using testing::StandIn;

/// What each of the acting endpoints puts on the wire, and what the service makes of it.
class ActionsAtService : public testing::ActingTest {
protected:
    /// The one request since the last look.
    SeenRequest seen() {
        const auto requests = service.requests();
        EXPECT_EQ(requests.size(), 1U);
        return requests.empty() ? SeenRequest() : requests.back();
    }
    static void expectBare(const SeenRequest& request, const std::string& method,
                           const std::string& path) {
        EXPECT_EQ(request.method, method);
        EXPECT_EQ(request.path, path);
        EXPECT_EQ(request.query, "");
        EXPECT_EQ(request.body, "");
        EXPECT_EQ(request.header("kelo-session-id"), StandIn::sessionKey);
        EXPECT_FALSE(request.hasHeader("Content-Type"));
        EXPECT_FALSE(request.hasHeader("X-Kelo-Polling"));
    }
    static void expectJson(const SeenRequest& request, const std::string& path) {
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, path);
        EXPECT_EQ(request.query, "");
        EXPECT_EQ(request.header("Content-Type"), "application/json");
        EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
        EXPECT_EQ(request.header("kelo-session-id"), StandIn::sessionKey);
    }
    UserResult setFollowing(bool following) {
        return outcomeOf<UserResult>([&](auto completion) {
            UserEndpoint::create("1002")->setFollowingOnTwitter(following, completion);
        });
    }
    static double secondsNow() {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    }
};

TEST_F(ActionsAtService, ALikeIsSeenInTheTimelineUntilItIsTakenBack) {
    const auto post = untouchedPost();
    const auto endpoint = LikeActionEndpoint::create(post);
    const auto liked = toggled(endpoint, true);
    ASSERT_TRUE(liked.success()) << liked.error()->description();
    expectBare(seen(), "POST", "/posts/" + *post->postId + "/likes");
    ASSERT_NE(liked.success()->item, nullptr);
    EXPECT_EQ(liked.success()->item->likeId, kept("likes").at(0).at("likeId").dump());
    EXPECT_EQ(liked.success()->item->user->username, StandIn::username);
    EXPECT_EQ(post->liked, false);
    EXPECT_EQ(again(*post)->liked, true);

    service.requests();
    const auto unliked = toggled(endpoint, false);
    ASSERT_TRUE(unliked.success()) << unliked.error()->description();
    EXPECT_EQ(unliked.success()->item, nullptr);
    expectBare(seen(), "DELETE", "/posts/" + *post->postId + "/likes");
    EXPECT_EQ(again(*post)->liked, false);
}

TEST_F(ActionsAtService, ARekeloIsSeenInTheTimelineUntilItIsTakenBack) {
    const auto post = untouchedPost();
    const auto done = toggled(RekeloActionEndpoint::create(post), true);
    ASSERT_TRUE(done.success()) << done.error()->description();
    expectBare(seen(), "POST", "/posts/" + *post->postId + "/repost");
    const auto rekeloed = again(*post);
    ASSERT_TRUE(rekeloed->rekeloed());
    EXPECT_EQ(rekeloed->currentUserRekelo->rekeloId, done.success()->item->rekeloId);

    service.requests();
    const auto undone = toggled(RekeloActionEndpoint::create(rekeloed), false);
    ASSERT_TRUE(undone.success()) << undone.error()->description();
    EXPECT_EQ(undone.success()->item, nullptr);
    expectBare(seen(), "DELETE",
               "/posts/" + *post->postId + "/repost/" + *done.success()->item->rekeloId);
    EXPECT_FALSE(again(*post)->rekeloed());
}

TEST_F(ActionsAtService, TakingBackAnUnknownRekeloGoesToThePathBefore) {
    const auto post = untouchedPost();
    const auto endpoint = RekeloActionEndpoint::create(post);
    toggled(endpoint, true);
    service.requests();
    const auto result = toggled(endpoint, false);
    EXPECT_EQ(result.error()->code(), 405);
    expectBare(seen(), "DELETE", "/posts/" + *post->postId + "/repost");
}

TEST_F(ActionsAtService, FollowingTwiceIsASuccessBothTimes) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(setFollowing(true).success());
        expectBare(seen(), "POST", "/users/1002/follow-on-twitter");
        EXPECT_EQ(kept("follows").size(), 1U);
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(setFollowing(false).success());
        expectBare(seen(), "POST", "/users/1002/unfollow-on-twitter");
        EXPECT_EQ(kept("follows").size(), 0U);
    }
}

TEST_F(ActionsAtService, FollowingNobodyIsAnError) {
    const auto result = outcomeOf<UserResult>([](auto completion) {
        UserEndpoint::create("999999")->setFollowingOnTwitter(true, completion);
    });
    EXPECT_EQ(result.error()->code(), 404);
}

TEST_F(ActionsAtService, FeedbackIsSentAsOneKey) {
    const auto post = untouchedPost();
    const auto endpoint = RecommendationsEndpoint::create();
    const auto toUser = outcomeOf<RecommendationResult>([&](auto completion) {
        endpoint->addUserFeedback("1003", RecommendationBoost::Neutral, completion);
    });
    EXPECT_TRUE(toUser.success());
    const auto userRequest = seen();
    expectJson(userRequest, "/recommendations/feedback/users/1003");
    EXPECT_EQ(userRequest.body, R"({"recommendationBoost":"neutral"})");
    const auto toPost = outcomeOf<RecommendationResult>([&](auto completion) {
        endpoint->addPostFeedback(*post->postId, RecommendationBoost::Negative, completion);
    });
    EXPECT_TRUE(toPost.success());
    const auto postRequest = seen();
    expectJson(postRequest, "/recommendations/feedback/posts/" + *post->postId);
    EXPECT_EQ(postRequest.body, R"({"recommendationBoost":"negative"})");
    const Json entries = kept("feedback");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].at("boost"), "neutral");
    EXPECT_EQ(entries[1].at("targetId").dump(), *post->postId);
}

TEST_F(ActionsAtService, FeedbackWithoutACompletionIsSentToo) {
    RecommendationsEndpoint::create()->addUserFeedback("1003", RecommendationBoost::Positive, {});
    EXPECT_TRUE(runUntil([&] { return kept("feedback").size() == 1; }));
    EXPECT_EQ(kept("feedback").at(0).at("boost"), "positive");
}

TEST_F(ActionsAtService, LoopsAreSentOneRecordAtATime) {
    const auto post = untouchedPost();
    std::atomic<int> lines = 0;
    Diagnostics::setSink(
        [&](std::string_view line) { lines += line == "Submitted loops with error: nil" ? 1 : 0; });
    const auto endpoint = LoopsEndpoint::create();
    const double before = secondsNow();
    endpoint->submit(5, *post);
    EXPECT_TRUE(runUntil([&] { return lines == 1; }));
    endpoint->submit(7, *post);
    EXPECT_TRUE(runUntil([&] { return lines == 2; }));
    const double after = secondsNow();
    Diagnostics::setSink([](std::string_view) {});
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    const std::int64_t counts[] = {5, 7};
    bool finer = false;
    for (std::size_t i = 0; i < 2; ++i) {
        expectJson(requests[i], "/loops");
        Json body = Json::parse(requests[i].body);
        const Json ts = body.at("loops").at(0).at("ts");
        EXPECT_TRUE(ts.is_number_float()) << ts;
        EXPECT_GE(ts.get<double>(), before - 2e-6); // a Date counts microseconds
        EXPECT_LE(ts.get<double>(), after);
        // A double of this size holds a quarter of a microsecond, which is 0.00024 milliseconds.
        const double milliseconds = ts.get<double>() * 1000;
        finer = finer || std::abs(milliseconds - std::round(milliseconds)) > 0.0007;
        body["loops"][0].erase("ts");
        EXPECT_EQ(body, Json({{"loops", {{{"count", counts[i]}, {"postId", *post->postId}}}}}));
        EXPECT_EQ(kept("loops").at(i).at("ts"), ts);
        EXPECT_EQ(kept("loops").at(i).at("count"), counts[i]);
    }
    EXPECT_TRUE(finer) << "both instants are whole milliseconds";
}

TEST_F(ActionsAtService, LoopsThatTheServiceRefusesOnlyLeaveALine) {
    const auto post = untouchedPost();
    std::atomic<int> lines = 0;
    Diagnostics::setSink([&](std::string_view line) {
        lines += line.starts_with("Submitted loops with error: ") ? 1 : 0;
    });
    service.expire(StandIn::sessionKey);
    LoopsEndpoint::create()->submit(5, *post);
    EXPECT_TRUE(runUntil([&] { return lines == 1; }));
    Diagnostics::setSink([](std::string_view) {});
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    EXPECT_EQ(delegate->reauthCount, 0);
    EXPECT_EQ(kept("loops"), Json::array());
}

TEST_F(ActionsAtService, ViewsAreReadAndReportedByOneEndpoint) {
    const auto endpoint = LongformViewsEndpoint::create(longformId);
    std::vector<std::int64_t> counts;
    const auto fetchCount = [&] {
        const std::size_t before = counts.size();
        endpoint->fetchViews([&](std::shared_ptr<KLLongformViews> views, std::optional<Error>) {
            counts.push_back(views ? views->count() : -1);
        });
        EXPECT_TRUE(runUntil([&] { return counts.size() > before; }));
        const auto request = seen();
        expectBare(request, "GET", "/longforms/lf-unseen/views");
    };
    fetchCount();
    bool submitted = false;
    const double before = secondsNow();
    endpoint->submitView([&](std::optional<Error> error) {
        EXPECT_FALSE(error);
        submitted = true;
    });
    EXPECT_TRUE(runUntil([&] { return submitted; }));
    const auto request = seen();
    expectJson(request, "/longforms/lf-unseen/views");
    const Json body = Json::parse(request.body);
    ASSERT_EQ(body.size(), 1U);
    const std::string timestamp = body.at("timestamp");
    EXPECT_NE(timestamp.find('.'), std::string::npos);
    EXPECT_NEAR(std::stod(timestamp), before, 20);
    EXPECT_EQ(kept("views").at(0).at("timestamp"), timestamp);
    fetchCount();
    EXPECT_EQ(counts, (std::vector<std::int64_t>{0, 1}));
}

TEST_F(ActionsAtService, TheSoundboardComesWhole) {
    std::vector<std::shared_ptr<SoundboardSound>> sounds;
    bool done = false;
    SoundboardEndpoint::create(session)->fetchSounds([&](auto sent, std::optional<Error> error) {
        EXPECT_FALSE(error);
        sounds = std::move(sent);
        done = true;
    });
    ASSERT_TRUE(runUntil([&] { return done; }));
    expectBare(seen(), "GET", "/soundboard");
    ASSERT_GE(sounds.size(), 12U);
    EXPECT_EQ(sounds.front()->name(), "Air horn");
    EXPECT_EQ(sounds.front()->soundId(), "8001");
    EXPECT_TRUE(sounds.front()->featured());
    EXPECT_FALSE(sounds.front()->sourcePostId());
    EXPECT_EQ(sounds.front()->soundUrl().absoluteString(),
              "https://" + service.host() + "/media/sounds/8001.m4a");
    EXPECT_FALSE(sounds[2]->featured());
    EXPECT_EQ(sounds[3]->sourcePostId(), std::to_string(1150000000000000001 + 12 * 4111));
}

} // namespace KeloAPI
