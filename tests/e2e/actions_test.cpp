#include "ActingTest.hpp"

#include <KeloAPI/endpoints/LoopsEndpoint.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

namespace KeloAPI::testing {

using Json = nlohmann::json;

/// The calls by which a user acts and asks, on the wire and in what the service makes of them.
class ActionsAtService : public ActingTest {
protected:
    /// A call of an endpoint, as the service sees it.
    struct Call {
        std::string name;
        std::string method;
        std::string path;
        std::string body = {};
        /// What the stand-in keeps of it, and how many after the first and after the second time.
        const char* kind = nullptr;
        std::array<std::size_t, 2> kept{};
        /// Prepares it, and gives the end of its path.
        std::function<std::string()> before = [] { return ""; };
        /// It needs no session: the stand-in has to be told to refuse it.
        bool isOpen() const { return method == "GET" && name != "me"; }
    };

    /// The body holds the instant of the call.
    static constexpr const char* dated = "dated";

    std::vector<Call> calls() {
        const auto like = [this] {
            toggled(LikeActionEndpoint::create(post), true);
            return "";
        };
        const auto rekelo = [this] {
            toggled(RekeloActionEndpoint::create(post), true);
            post = again(*post);
            return "/" + *post->currentUserRekelo->rekeloId;
        };
        const std::string at = "/posts/" + *post->postId;
        const std::string feedback = "/recommendations/feedback/";
        const std::string neutral = R"({"recommendationBoost":"neutral"})";
        const std::string negative = R"({"recommendationBoost":"negative"})";
        return {
            {"like", "POST", at + "/likes", "", "likes", {1, 1}},
            {"unlike", "DELETE", at + "/likes", "", "likes", {0, 0}, like},
            {"rekelo", "POST", at + "/repost", "", "reposts", {1, 1}},
            {"unrekelo", "DELETE", at + "/repost", "", "reposts", {0, 0}, rekelo},
            {"follow", "POST", "/users/1002/follow-on-twitter", "", "follows", {1, 1}},
            // The second time nobody is there to be unfollowed, which is a success.
            {"unfollow", "POST", "/users/1002/unfollow-on-twitter", "", "follows", {0, 0}},
            {"user feedback", "POST", feedback + "users/1003", neutral, "feedback", {1, 2}},
            {"post feedback",
             "POST",
             feedback + "posts/" + *post->postId,
             negative,
             "feedback",
             {3, 4}},
            {"view", "POST", "/longforms/lf-unseen/views", dated, "views", {1, 2}},
            {"views", "GET", "/longforms/lf-unseen/views"},
            {"sounds", "GET", "/soundboard"},
            {"me", "GET", "/users/me"},
        };
    }

    void expectOnTheWire(const SeenRequest& request, const std::string& method,
                         const std::string& path, const std::string& body) {
        EXPECT_EQ(request.method, method);
        EXPECT_EQ(request.path, path);
        EXPECT_EQ(request.query, "");
        if (body == dated) {
            EXPECT_GT(request.bodyBytes, 0);
        } else {
            EXPECT_EQ(request.body, body);
        }
        expectFields(request, "application/json");
    }
    void identifyFully() {
        delegate->acceptLanguage = "pt-PT";
        delegate->userAgent = "acting/2";
        delegate->keloClient = "tests/1";
        delegate->polling = true;
    }

    /// The service refuses the user's session with this code from now on.
    void refuse(int code, const Call& call) {
        if (call.isOpen()) {
            service.addFault({{"match", {{"path", call.path}}},
                              {"action", {{"type", "error"}, {"code", code}, {"message", "no"}}}});
        } else if (code == 103) {
            service.expire(*delegate->sessionKey);
        } else {
            delegate->sessionKey = "unknown";
        }
        service.requests();
    }
    /// The call fails with the code and waits; with a new session it is sent again, the same but
    /// for the key.
    void expectSentAgainAfter(int code, const Call& call) {
        delegate->reauthCount = 0;
        const std::string path = call.path + call.before();
        refuse(code, call);
        std::vector<std::int64_t> outcomes;
        sends.at(call.name)([&](const std::optional<Error>& error) {
            outcomes.push_back(error ? error->code() : 0);
        });
        ASSERT_TRUE(runUntil([&] { return outcomes.size() == 1; }));
        EXPECT_EQ(session->queuedRetryCount(), 1U);
        EXPECT_EQ(delegate->reauthCount, 1);
        const auto refused = service.requests();
        ASSERT_EQ(refused.size(), 1U);
        expectOnTheWire(refused[0], call.method, path, call.body);

        delegate->sessionKey = service.signIn(StandIn::username);
        session->handleQueuedRetries(true);
        ASSERT_TRUE(runUntil([&] { return outcomes.size() == 2; }));
        passThrough();
        EXPECT_EQ(outcomes, (std::vector<std::int64_t>{code, 0}));
        const auto requests = service.requests();
        ASSERT_EQ(requests.size(), 1U);
        expectOnTheWire(requests[0], call.method, path, call.body);
        EXPECT_EQ(requests[0].body, refused[0].body);
        EXPECT_EQ(delegate->reauthCount, 1);
        EXPECT_EQ(session->queuedRetryCount(), 0U);
    }

    static double secondsNow() {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    }

    std::shared_ptr<KLWatchPost> post = untouchedPost();
    std::map<std::string, SendCall> sends = endpointCalls(post, longformId);
};

TEST_F(ActionsAtService, EveryCallIsSentAndDoneOnceTheUserHasSignedInAgain) {
    for (const Call& call : calls()) {
        for (const std::size_t time : {0, 1}) {
            SCOPED_TRACE(call.name + (time == 0 ? "" : " again"));
            ASSERT_NO_FATAL_FAILURE(expectSentAgainAfter(time == 0 ? 103 : 100, call));
            if (call.kind != nullptr) {
                EXPECT_EQ(kept(call.kind).size(), call.kept.at(time));
            }
            identifyFully();
        }
        delegate->acceptLanguage = delegate->userAgent = delegate->keloClient = std::nullopt;
        delegate->polling = false;
    }
    EXPECT_EQ(kept("feedback").front().at("boost"), "neutral");
    EXPECT_EQ(kept("feedback").back().at("targetId").dump(), *post->postId);
}

TEST_F(ActionsAtService, ALikeIsSeenInTheTimelineUntilItIsTakenBack) {
    const auto endpoint = LikeActionEndpoint::create(post);
    const auto liked = toggled(endpoint, true);
    ASSERT_TRUE(liked.success()) << liked.error()->description();
    ASSERT_NE(liked.success()->item, nullptr);
    EXPECT_EQ(liked.success()->item->likeId, kept("likes").at(0).at("likeId").dump());
    EXPECT_EQ(liked.success()->item->user->username, StandIn::username);
    EXPECT_EQ(post->liked, false);
    EXPECT_EQ(again(*post)->liked, true);
    const auto unliked = toggled(endpoint, false);
    ASSERT_TRUE(unliked.success()) << unliked.error()->description();
    EXPECT_EQ(unliked.success()->item, nullptr);
    EXPECT_EQ(again(*post)->liked, false);
}

TEST_F(ActionsAtService, ARekeloIsSeenInTheTimelineUntilItIsTakenBack) {
    const auto done = toggled(RekeloActionEndpoint::create(post), true);
    ASSERT_TRUE(done.success()) << done.error()->description();
    const auto rekeloed = again(*post);
    ASSERT_TRUE(rekeloed->rekeloed());
    EXPECT_EQ(rekeloed->currentUserRekelo->rekeloId, done.success()->item->rekeloId);
    const auto undone = toggled(RekeloActionEndpoint::create(rekeloed), false);
    ASSERT_TRUE(undone.success()) << undone.error()->description();
    EXPECT_EQ(undone.success()->item, nullptr);
    EXPECT_FALSE(again(*post)->rekeloed());
}

TEST_F(ActionsAtService, LoopsAreSentOneRecordAtATime) {
    identifyFully();
    std::atomic<int> lines = 0;
    Diagnostics::setSink(
        [&](std::string_view line) { lines += line == "Submitted loops with error: nil" ? 1 : 0; });
    const auto endpoint = LoopsEndpoint::create();
    const double before = secondsNow();
    const std::int64_t counts[] = {5, 7};
    for (const int time : {1, 2}) {
        endpoint->submit(counts[time - 1], post);
        EXPECT_TRUE(runUntil([&] { return lines == time; }));
    }
    const double after = secondsNow();
    Diagnostics::setSink([](std::string_view) {});
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    bool finer = false;
    for (std::size_t i = 0; i < 2; ++i) {
        expectOnTheWire(requests[i], "POST", "/loops", dated);
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

TEST_F(ActionsAtService, ViewsAreReadAndReportedByOneEndpoint) {
    const auto endpoint = LongformViewsEndpoint::create(longformId);
    const auto count = [&] {
        const auto [views, error] = awaited<std::shared_ptr<KLLongformViews>, std::optional<Error>>(
            [&](auto completion) { endpoint->fetchViews(completion); });
        return views ? views->count : -1;
    };
    EXPECT_EQ(count(), 0);
    service.requests();
    const double before = secondsNow();
    EXPECT_FALSE(
        awaited<std::optional<Error>>([&](auto completion) { endpoint->submitView(completion); }));
    const double after = secondsNow();
    const Json body = Json::parse(service.requests().at(0).body);
    ASSERT_EQ(body.size(), 1U);
    const std::string timestamp = body.at("timestamp");
    EXPECT_NE(timestamp.find('.'), std::string::npos);
    EXPECT_GE(std::stod(timestamp), before - 2e-6);
    EXPECT_LE(std::stod(timestamp), after);
    EXPECT_EQ(kept("views").at(0).at("timestamp"), timestamp);
    EXPECT_EQ(count(), 1);
}

TEST_F(ActionsAtService, TheSoundboardComesWhole) {
    const auto [sounds, error] =
        awaited<std::vector<std::shared_ptr<SoundboardSound>>, std::optional<Error>>(
            [&](auto completion) { SoundboardEndpoint::create(session)->fetchSounds(completion); });
    EXPECT_FALSE(error);
    ASSERT_GE(sounds.size(), 12U);
    EXPECT_EQ(sounds.front()->name, "Air horn");
    EXPECT_EQ(sounds.front()->soundId, "8001");
    EXPECT_TRUE(sounds.front()->featured);
    EXPECT_FALSE(sounds.front()->sourcePostId);
    EXPECT_EQ(sounds.front()->soundUrl.absoluteString(),
              "https://" + service.host() + "/media/sounds/8001.m4a");
    EXPECT_FALSE(sounds[2]->featured);
    EXPECT_EQ(sounds[3]->sourcePostId, std::to_string(1150000000000000001 + 12 * 4111));
}

TEST_F(ActionsAtService, ACaptchaIsDemandedUntilItIsSolved) {
    const std::string url = service.demandCaptcha(StandIn::sessionKey);
    delegate->handlesCaptcha = true;
    std::vector<std::string> outcomes;
    MeEndpoint::create()->get([&](const MeResult& result) {
        outcomes.push_back(result.error() ? std::to_string(result.error()->code())
                                          : result.success()->user->username.value_or("?"));
    });
    for (const std::size_t count : {1U, 2U}) {
        ASSERT_TRUE(runUntil([&] { return outcomes.size() == count; }));
        EXPECT_EQ(delegate->captchaUrls.back(), url);
        EXPECT_EQ(delegate->captchaUrls.size(), count);
        EXPECT_EQ(session->queuedRetryCount(), 1U);
        if (count == 2) {
            service.solveCaptcha(url);
        }
        session->handleQueuedRetries(true);
    }
    ASSERT_TRUE(runUntil([&] { return outcomes.size() == 3; }));
    EXPECT_EQ(outcomes, (std::vector<std::string>{"419", "419", StandIn::username}));
}

using ParallelAtService = ActingTest;

TEST_F(ParallelAtService, SixtyFourThreadsActThroughOneSession) {
    constexpr std::size_t threads = 64;
    const auto posts = newestPosts(threads);
    ASSERT_EQ(posts.size(), threads);
    std::atomic<std::size_t> loopLines = 0;
    Diagnostics::setSink([&](std::string_view line) {
        loopLines += line == "Submitted loops with error: nil" ? 1 : 0;
    });
    // Completions run on the main queue, so that plain counters do.
    std::size_t failures = 0;
    std::array<std::size_t, 6> completed{};
    const auto count = [&](std::size_t kind) {
        return [&, kind](const auto& result) {
            ++completed.at(kind);
            failures += result.error() ? 1 : 0;
        };
    };
    std::vector<std::thread> actors;
    for (const auto& post : posts) {
        // The registry of sessions, which these constructors ask, belongs to this thread.
        actors.emplace_back(
            [&, post, like = LikeActionEndpoint::create(post),
             rekelo = RekeloActionEndpoint::create(post), follow = UserEndpoint::create("1002"),
             feedback = RecommendationsEndpoint::create(),
             views = LongformViewsEndpoint::create(longformId), loops = LoopsEndpoint::create()] {
                like->toggle(true, count(0));
                rekelo->toggle(true, count(1));
                follow->setFollowingOnTwitter(true, count(2));
                feedback->addPostFeedback(*post->postId, RecommendationBoost::Positive, count(3));
                views->submitView([&](const std::optional<Error>& error) {
                    ++completed[4];
                    failures += error ? 1 : 0;
                });
                loops->submit(2, post);
                const auto own = Endpoint::create(session);
                own->setPath("timelines/all");
                own->setParameters({{"size", 3}});
                own->request(std::make_shared<PostParser>(),
                             [&](const auto& items, const auto&, const Timeline&,
                                 const std::optional<Error>& error) {
                                 ++completed[5];
                                 failures += error || items.size() != 3 ? 1 : 0;
                             });
            });
    }
    const bool all = runUntil(
        [&] {
            return loopLines == threads &&
                   completed == std::array{threads, threads, threads, threads, threads, threads};
        },
        3 * timeLimit);
    for (std::thread& actor : actors) {
        actor.join();
    }
    Diagnostics::setSink([](std::string_view) {});
    EXPECT_TRUE(all);
    EXPECT_EQ(failures, 0U);
    for (const auto& post : newestPosts(threads)) {
        EXPECT_EQ(post->liked, true);
        EXPECT_TRUE(post->rekeloed());
    }
    EXPECT_EQ(kept("follows").size(), 1U);
    EXPECT_EQ(kept("feedback").size(), threads);
    EXPECT_EQ(kept("views").size(), threads);
    EXPECT_EQ(kept("loops").size(), threads);
}

} // namespace KeloAPI::testing
