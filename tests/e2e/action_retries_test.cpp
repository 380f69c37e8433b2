#include "ActingTest.hpp"

#include <deque>
#include <map>

namespace KeloAPI {

using testing::runFor;
using testing::runUntil;
using testing::StandIn;

/// Hands out one session key after the other.
class KeyringDelegate : public testing::RecordingDelegate {
public:
    std::deque<std::string> keys;

    std::optional<std::string> sessionKeyForSession(Session&) override {
        if (keys.empty()) {
            return std::nullopt;
        }
        auto key = std::move(keys.front());
        keys.pop_front();
        return key;
    }
};

/// Actions that meet an expired session.
class ActionRetriesAtService : public testing::ActingTest {
protected:
    using Note = std::function<void(const std::optional<Error>&)>;

    /// A completion's outcome becomes a line of `events`.
    Note note(const std::string& name) {
        return [this, name](const std::optional<Error>& error) {
            events.push_back(name + (error ? " " + std::to_string(error->code()) : " done"));
        };
    }
    template <class Result>
    static std::function<void(const Result&)> noting(Note note) {
        return [note = std::move(note)](const Result& result) {
            note(result.error() ? std::optional(*result.error()) : std::nullopt);
        };
    }
    void like(const std::shared_ptr<KLWatchPost>& post, bool on, const std::string& name) {
        LikeActionEndpoint::create(post)->toggle(on, noting<PostActionResult<KLLike>>(note(name)));
    }
    bool eventsReach(std::size_t count) {
        return runUntil([&] { return events.size() >= count; });
    }
    /// The service refuses the user's session from now on, with this code.
    void refuseSession(int code) {
        if (code == 103) {
            service.expire(*delegate->sessionKey);
        } else {
            delegate->sessionKey = "unknown";
        }
    }
    /// The call fails with the code and waits; with a new session it is sent again, the same but
    /// for the key.
    void isSentAgainAfter(int code, const std::function<void(const std::string& name)>& act) {
        service.requests();
        events.clear();
        delegate->reauthCount = 0;
        const std::string refusedKey = *delegate->sessionKey;
        act("call");
        ASSERT_TRUE(eventsReach(1));
        EXPECT_EQ(session->queuedRetryCount(), 1U);
        EXPECT_EQ(delegate->reauthCount, 1);
        const auto refused = service.requests();
        ASSERT_EQ(refused.size(), 1U);
        EXPECT_EQ(refused[0].header("kelo-session-id"), refusedKey);
        delegate->sessionKey = service.signIn(StandIn::username);
        session->handleQueuedRetries(true);
        ASSERT_TRUE(eventsReach(2));
        runFor(std::chrono::milliseconds(20));
        EXPECT_EQ(events, (std::vector<std::string>{"call " + std::to_string(code), "call done"}));
        const auto requests = service.requests();
        ASSERT_EQ(requests.size(), 1U);
        EXPECT_EQ(requests[0].method, refused[0].method);
        EXPECT_EQ(requests[0].path, refused[0].path);
        EXPECT_EQ(requests[0].query, refused[0].query);
        EXPECT_EQ(requests[0].body, refused[0].body);
        EXPECT_EQ(requests[0].header("kelo-session-id"), *delegate->sessionKey);
        EXPECT_EQ(delegate->reauthCount, 1);
        EXPECT_EQ(session->queuedRetryCount(), 0U);
    }
    /// Does it once, lets the session expire, and does it again with a new one.
    void survivesExpiry(const std::function<void(const std::string& name)>& act) {
        act("first");
        ASSERT_TRUE(eventsReach(1));
        EXPECT_EQ(events, std::vector<std::string>{"first done"});
        refuseSession(103);
        isSentAgainAfter(103, act);
    }

    std::vector<std::string> events;
};

TEST_F(ActionRetriesAtService, ALike) {
    const auto post = untouchedPost();
    survivesExpiry([&](const std::string& name) { like(post, true, name); });
    EXPECT_EQ(kept("likes").size(), 1U);
}

TEST_F(ActionRetriesAtService, ARekelo) {
    const auto post = untouchedPost();
    survivesExpiry([&](const std::string& name) {
        RekeloActionEndpoint::create(post)->toggle(true,
                                                   noting<PostActionResult<KLRekelo>>(note(name)));
    });
    EXPECT_EQ(kept("reposts").size(), 1U);
}

TEST_F(ActionRetriesAtService, AFollow) {
    survivesExpiry([&](const std::string& name) {
        UserEndpoint::create("1002")->setFollowingOnTwitter(true, noting<UserResult>(note(name)));
    });
    EXPECT_EQ(kept("follows").size(), 1U);
}

TEST_F(ActionRetriesAtService, Feedback) {
    survivesExpiry([&](const std::string& name) {
        RecommendationsEndpoint::create()->addUserFeedback(
            "1002", RecommendationBoost::Positive, noting<RecommendationResult>(note(name)));
    });
    EXPECT_EQ(kept("feedback").size(), 2U);
}

TEST_F(ActionRetriesAtService, AView) {
    survivesExpiry([&](const std::string& name) {
        LongformViewsEndpoint::create(longformId)->submitView(note(name));
    });
    EXPECT_EQ(kept("views").size(), 2U);
}

TEST_F(ActionRetriesAtService, AnUnlike) {
    const auto post = untouchedPost();
    for (const int code : {100, 103}) {
        ASSERT_TRUE(toggled(LikeActionEndpoint::create(post), true).success());
        refuseSession(code);
        EXPECT_EQ(kept("likes").size(), 1U);
        isSentAgainAfter(code, [&](const std::string& name) { like(post, false, name); });
        EXPECT_EQ(kept("likes").size(), 0U);
    }
}

TEST_F(ActionRetriesAtService, ARekeloTakenBack) {
    const auto post = untouchedPost();
    for (const int code : {100, 103}) {
        ASSERT_TRUE(toggled(RekeloActionEndpoint::create(post), true).success());
        const auto rekeloed = again(*post);
        ASSERT_TRUE(rekeloed->rekeloed());
        refuseSession(code);
        EXPECT_EQ(kept("reposts").size(), 1U);
        isSentAgainAfter(code, [&](const std::string& name) {
            RekeloActionEndpoint::create(rekeloed)->toggle(
                false, noting<PostActionResult<KLRekelo>>(note(name)));
        });
        EXPECT_EQ(kept("reposts").size(), 0U);
    }
}

TEST_F(ActionRetriesAtService, AnUnfollow) {
    for (const int code : {100, 103}) {
        refuseSession(code);
        // The retry hears that there is nobody to unfollow, which is a success.
        isSentAgainAfter(code, [&](const std::string& name) {
            UserEndpoint::create("1002")->setFollowingOnTwitter(false,
                                                                noting<UserResult>(note(name)));
        });
    }
}

TEST_F(ActionRetriesAtService, FeedbackOnAPost) {
    const auto post = untouchedPost();
    std::size_t entries = 0;
    for (const int code : {100, 103}) {
        refuseSession(code);
        isSentAgainAfter(code, [&](const std::string& name) {
            RecommendationsEndpoint::create()->addPostFeedback(
                *post->postId, RecommendationBoost::Negative,
                noting<RecommendationResult>(note(name)));
        });
        ASSERT_EQ(kept("feedback").size(), ++entries);
        EXPECT_EQ(kept("feedback").back().at("targetId").dump(), *post->postId);
    }
}

TEST_F(ActionRetriesAtService, ReadingViews) {
    for (const int code : {100, 103}) {
        // Views are open to all: the stand-in has to be told to refuse.
        service.addFault({{"match", {{"path", "/longforms/*"}}},
                          {"action", {{"type", "error"}, {"code", code}, {"message", "no"}}}});
        std::shared_ptr<KLLongformViews> read;
        isSentAgainAfter(code, [&](const std::string& name) {
            LongformViewsEndpoint::create("lf-clay-orchestra")
                ->fetchViews([&read, note = note(name)](std::shared_ptr<KLLongformViews> views,
                                                        const std::optional<Error>& error) {
                    EXPECT_EQ(views == nullptr, error.has_value());
                    read = std::move(views);
                    note(error);
                });
        });
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(read->count(), 7310);
    }
}

TEST_F(ActionRetriesAtService, TheSoundboard) {
    service.addFault({{"match", {{"path", "/soundboard"}}},
                      {"action", {{"type", "error"}, {"code", 103}, {"message", "no"}}}});
    std::size_t sounds = 0;
    isSentAgainAfter(103, [&](const std::string& name) {
        SoundboardEndpoint::create(session)->fetchSounds(
            [&sounds, note = note(name)](const std::vector<std::shared_ptr<SoundboardSound>>& sent,
                                         const std::optional<Error>& error) {
                sounds = sent.size();
                note(error);
            });
    });
    EXPECT_GT(sounds, 10U);
}

TEST_F(ActionRetriesAtService, AnUploadIsSentAgainWithoutItsBody) {
    const auto post = untouchedPost();
    std::string bytes("\0first\0\r\n\xff\0", 11);
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    const auto upload = [&](const std::string& name) {
        const auto endpoint = Endpoint::create(session);
        endpoint->setPath("posts/" + *post->postId + "/likes");
        endpoint->setMethod(Method::POST);
        endpoint->upload(std::make_shared<LikeParser>(), Data(bytes),
                         [note = note(name)](const std::vector<std::shared_ptr<KLLike>>&,
                                             const std::optional<Metadata>&, const Timeline&,
                                             const std::optional<Error>& error) { note(error); });
    };
    const auto seen = [&] {
        const auto requests = service.requests();
        EXPECT_EQ(requests.size(), 1U);
        return requests.empty() ? testing::SeenRequest() : requests.front();
    };
    upload("first");
    ASSERT_TRUE(eventsReach(1));
    const auto first = seen();
    EXPECT_EQ(first.method, "POST");
    EXPECT_EQ(first.path, "/posts/" + *post->postId + "/likes");
    EXPECT_EQ(first.body, bytes);
    EXPECT_EQ(first.header("Content-Length"), std::to_string(bytes.size()));

    service.expire(StandIn::sessionKey);
    upload("second");
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(seen().body, bytes);
    delegate->sessionKey = service.signIn(StandIn::username);
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(3));
    const auto again = seen();
    EXPECT_EQ(again.method, "POST");
    EXPECT_EQ(again.path, first.path);
    EXPECT_EQ(again.body, "");
    EXPECT_THAT(again.header("Content-Length"), ::testing::AnyOf("", "0"));
    EXPECT_EQ(events, (std::vector<std::string>{"first done", "second 103", "second done"}));
}

TEST_F(ActionRetriesAtService, TwoThatFailTogetherAreReleasedInOrderWithTheNewKey) {
    const auto posts = newestPosts(2);
    service.expire(StandIn::sessionKey);
    like(posts[0], true, "a");
    like(posts[1], true, "b");
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(session->queuedRetryCount(), 2U);
    EXPECT_EQ(delegate->reauthCount, 2);
    // The order in which they were queued is the order in which their failures were told.
    const std::vector<std::shared_ptr<KLWatchPost>> queued =
        events[0] == "a 103" ? posts : std::vector{posts[1], posts[0]};
    service.requests();
    // Two connections may carry them, so that the order of arrival says nothing: each gets its own
    // new key, in the order in which they are sent.
    const auto keyring = std::make_shared<KeyringDelegate>();
    keyring->host = service.host();
    const std::vector<std::string> keys = {service.signIn(StandIn::username),
                                           service.signIn(StandIn::username)};
    keyring->keys.assign(keys.begin(), keys.end());
    session->setDelegate(keyring);
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(4));
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    std::map<std::string, std::string> pathOfKey;
    for (const auto& request : service.requests()) {
        pathOfKey[request.header("kelo-session-id")] = request.path;
    }
    EXPECT_EQ(pathOfKey.size(), 2U);
    EXPECT_EQ(pathOfKey[keys[0]], "/posts/" + *queued[0]->postId + "/likes");
    EXPECT_EQ(pathOfKey[keys[1]], "/posts/" + *queued[1]->postId + "/likes");
    EXPECT_THAT((std::vector(events.begin() + 2, events.end())),
                ::testing::UnorderedElementsAre("a done", "b done"));
}

TEST_F(ActionRetriesAtService, DroppedRetriesSendNothing) {
    const auto post = untouchedPost();
    service.expire(StandIn::sessionKey);
    like(post, true, "like");
    ASSERT_TRUE(eventsReach(1));
    service.requests();
    delegate->sessionKey = service.signIn(StandIn::username);
    session->handleQueuedRetries(false);
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    session->handleQueuedRetries(true);
    runFor(std::chrono::milliseconds(50));
    EXPECT_EQ(events, std::vector<std::string>{"like 103"});
    EXPECT_TRUE(service.requests().empty());
    EXPECT_EQ(kept("likes").size(), 0U);
    like(post, true, "like");
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events.back(), "like done");
}

TEST_F(ActionRetriesAtService, ADelegateMayReleaseFromInsideItsCallback) {
    const auto post = untouchedPost();
    service.expire(StandIn::sessionKey);
    delegate->onReauth = [this](Session& expired) {
        delegate->sessionKey = service.signIn(StandIn::username);
        expired.handleQueuedRetries(true);
    };
    like(post, true, "like");
    ASSERT_TRUE(eventsReach(2));
    runFor(std::chrono::milliseconds(20));
    EXPECT_EQ(events, (std::vector<std::string>{"like 103", "like done"}));
    EXPECT_EQ(delegate->reauthCount, 1);
    EXPECT_EQ(again(*post)->liked, true);
}

TEST_F(ActionRetriesAtService, AnEndpointThatTheHostDroppedIsSentAgain) {
    auto post = untouchedPost();
    service.expire(StandIn::sessionKey);
    auto endpoint = LikeActionEndpoint::create(post);
    const std::weak_ptr<LikeActionEndpoint> watched = endpoint;
    const std::string postId = *post->postId;
    endpoint->toggle(true, noting<PostActionResult<KLLike>>(note("like")));
    ASSERT_TRUE(eventsReach(1));
    endpoint.reset();
    post.reset();
    EXPECT_FALSE(watched.expired());
    delegate->sessionKey = service.signIn(StandIn::username);
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events.back(), "like done");
    EXPECT_EQ(kept("likes").at(0).at("postId").dump(), postId);
    EXPECT_TRUE(runUntil([&] { return watched.expired(); }));
}

TEST_F(ActionRetriesAtService, ACaptchaIsSolvedAndTheLikeSentAgain) {
    const auto post = untouchedPost();
    const std::string url = service.demandCaptcha(StandIn::sessionKey);
    delegate->handlesCaptcha = true;
    like(post, true, "like");
    ASSERT_TRUE(eventsReach(1));
    service.solveCaptcha(url);
    session->handleQueuedRetries(true);
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events, (std::vector<std::string>{"like 419", "like done"}));
    EXPECT_EQ(again(*post)->liked, true);
}

} // namespace KeloAPI
