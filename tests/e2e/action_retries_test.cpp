#include "ActingTest.hpp"

#include <array>

namespace KeloAPI {

using testing::runUntil;
using testing::StandIn;

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
        passThrough();
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
    using Act = std::function<void(const std::string& name)>;

    std::vector<std::string> events;
};

TEST_F(ActionRetriesAtService, EveryActionIsDoneOnceTheUserHasSignedInAgain) {
    const auto post = untouchedPost();
    auto rekeloed = post;
    const auto nothing = [] {};
    const auto rekelo = [this](const auto& of, bool on, const std::string& name) {
        RekeloActionEndpoint::create(of)->toggle(on,
                                                 noting<PostActionResult<KLRekelo>>(note(name)));
    };
    const auto follow = [this](bool following, const std::string& name) {
        UserEndpoint::create("1002")->setFollowingOnTwitter(following,
                                                            noting<UserResult>(note(name)));
    };
    struct {
        const char* kind;
        /// How many of the kind there are after the first time and after the second.
        std::array<std::size_t, 2> kept;
        std::function<void()> before;
        Act act;
    } const cases[] = {
        {"likes", {1, 1}, nothing, [&](const auto& name) { like(post, true, name); }},
        {"likes",
         {0, 0},
         [&] { toggled(LikeActionEndpoint::create(post), true); },
         [&](const auto& name) { like(post, false, name); }},
        {"reposts", {1, 1}, nothing, [&](const auto& name) { rekelo(post, true, name); }},
        {"reposts",
         {0, 0},
         [&] {
             toggled(RekeloActionEndpoint::create(post), true);
             rekeloed = again(*post);
         },
         [&](const auto& name) { rekelo(rekeloed, false, name); }},
        {"follows", {1, 1}, nothing, [&](const auto& name) { follow(true, name); }},
        // The second time nobody is there to be unfollowed, which is a success.
        {"follows", {0, 0}, nothing, [&](const auto& name) { follow(false, name); }},
        {"feedback",
         {1, 2},
         nothing,
         [&](const auto& name) {
             RecommendationsEndpoint::create()->addUserFeedback(
                 "1002", RecommendationBoost::Positive, noting<RecommendationResult>(note(name)));
         }},
        {"feedback",
         {3, 4},
         nothing,
         [&](const auto& name) {
             RecommendationsEndpoint::create()->addPostFeedback(
                 *post->postId, RecommendationBoost::Negative,
                 noting<RecommendationResult>(note(name)));
         }},
        {"views",
         {1, 2},
         nothing,
         [&](const auto& name) {
             LongformViewsEndpoint::create(longformId)->submitView(note(name));
         }},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.kind);
        for (const std::size_t time : {0, 1}) {
            const int code = time == 0 ? 103 : 100;
            one.before();
            refuseSession(code);
            ASSERT_NO_FATAL_FAILURE(isSentAgainAfter(code, one.act));
            EXPECT_EQ(kept(one.kind).size(), one.kept.at(time));
        }
    }
    EXPECT_EQ(kept("feedback").back().at("targetId").dump(), *post->postId);
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
    passThrough();
    EXPECT_EQ(events, std::vector<std::string>{"like 103"});
    EXPECT_TRUE(service.requests().empty());
    EXPECT_EQ(kept("likes").size(), 0U);
    like(post, true, "like");
    ASSERT_TRUE(eventsReach(2));
    EXPECT_EQ(events.back(), "like done");
}

} // namespace KeloAPI
