#include "ActingTest.hpp"

#include <KeloAPI/api/Endpoint.hpp>

#include <array>
#include <atomic>
#include <thread>

namespace KeloAPI::testing {

class ParallelAtService : public ActingTest {};

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
                loops->submit(2, *post);
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
        std::chrono::seconds(60));
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
