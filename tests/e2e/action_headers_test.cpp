#include "ActingTest.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>

#include <algorithm>

namespace KeloAPI {

using testing::runUntil;
using testing::SeenRequest;
using testing::StandIn;

/// The header fields of each of the acting calls, all of them, as they arrive.
class ActionHeadersAtService : public testing::ActingTest {
protected:
    using Fields = std::vector<std::pair<std::string, std::string>>;
    struct Call {
        std::string method;
        std::string path;
    };

    /// Sends each kind of call once, one after another.
    void sendAll() {
        toggled(LikeActionEndpoint::create(post), true);
        toggled(LikeActionEndpoint::create(post), false);
        const auto rekelo = toggled(RekeloActionEndpoint::create(post), true);
        post->currentUserRekelo = rekelo.success()->item;
        toggled(RekeloActionEndpoint::create(post), false);
        for (const bool following : {true, false}) {
            outcomeOf<UserResult>([&](auto completion) {
                UserEndpoint::create("1002")->setFollowingOnTwitter(following, completion);
            });
        }
        outcomeOf<RecommendationResult>([&](auto completion) {
            RecommendationsEndpoint::create()->addUserFeedback("1003", RecommendationBoost::Neutral,
                                                               completion);
        });
        outcomeOf<RecommendationResult>([&](auto completion) {
            RecommendationsEndpoint::create()->addPostFeedback(
                *post->postId, RecommendationBoost::Positive, completion);
        });
        LoopsEndpoint::create()->submit(5, *post);
        EXPECT_TRUE(runUntil([&] { return !kept("loops").empty(); }));
        int answers = 0;
        const auto views = LongformViewsEndpoint::create(longformId);
        views->fetchViews([&](const auto&, const auto&) { ++answers; });
        EXPECT_TRUE(runUntil([&] { return answers == 1; }));
        views->submitView([&](const auto&) { ++answers; });
        EXPECT_TRUE(runUntil([&] { return answers == 2; }));
        SoundboardEndpoint::create(session)->fetchSounds(
            [&](const auto&, const auto&) { ++answers; });
        EXPECT_TRUE(runUntil([&] { return answers == 3; }));
        MeEndpoint::create()->get([&](const auto&) { ++answers; });
        EXPECT_TRUE(runUntil([&] { return answers == 4; }));
    }
    std::vector<Call> calls() const {
        const std::string at = "/posts/" + *post->postId;
        return {{"POST", at + "/likes"},
                {"DELETE", at + "/likes"},
                {"POST", at + "/repost"},
                {"DELETE", at + "/repost/" + *post->currentUserRekelo->rekeloId},
                {"POST", "/users/1002/follow-on-twitter"},
                {"POST", "/users/1002/unfollow-on-twitter"},
                {"POST", "/recommendations/feedback/users/1003"},
                {"POST", "/recommendations/feedback/posts/" + *post->postId},
                {"POST", "/loops"},
                {"GET", "/longforms/lf-unseen/views"},
                {"POST", "/longforms/lf-unseen/views"},
                {"GET", "/soundboard"},
                {"GET", "/users/me"}};
    }
    static Fields sorted(Fields fields) {
        std::sort(fields.begin(), fields.end());
        return fields;
    }
    /// `identifying` and what HTTP itself needs, and nothing else.
    void expectFields(const SeenRequest& request, const Fields& identifying) {
        Fields wanted = identifying;
        wanted.emplace_back("Host", service.host());
        wanted.emplace_back("Accept-Encoding", request.header("Accept-Encoding"));
        EXPECT_NE(request.header("Accept-Encoding"), "");
        if (request.method == "POST") {
            wanted.emplace_back("Content-Length", std::to_string(request.body.size()));
        }
        if (!request.body.empty()) {
            wanted.emplace_back("Content-Type", "application/json");
        }
        EXPECT_EQ(sorted(request.headers), sorted(wanted)) << request.method << request.path;
    }
    void expectEveryCallToCarry(const Fields& identifying) {
        sendAll();
        const auto requests = service.requests();
        const auto wanted = calls();
        ASSERT_EQ(requests.size(), wanted.size());
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            EXPECT_EQ(requests[i].method, wanted[i].method) << i;
            EXPECT_EQ(requests[i].path, wanted[i].path) << i;
            EXPECT_EQ(requests[i].query, "") << i;
            expectFields(requests[i], identifying);
        }
    }

    std::shared_ptr<KLWatchPost> post = untouchedPost();
};

TEST_F(ActionHeadersAtService, AreAllThatTheHostGives) {
    delegate->acceptLanguage = "pt-PT";
    delegate->userAgent = "acting/2";
    delegate->keloClient = "tests/1";
    delegate->polling = true;
    expectEveryCallToCarry({{"Accept-Language", "pt-PT"},
                            {"User-Agent", "acting/2"},
                            {"X-Kelo-Client", "tests/1"},
                            {"X-Kelo-Polling", "true"},
                            {"kelo-session-id", StandIn::sessionKey}});
}

TEST_F(ActionHeadersAtService, AreFewWhereTheHostGivesFew) {
    expectEveryCallToCarry({{"kelo-session-id", StandIn::sessionKey}});
}

} // namespace KeloAPI
