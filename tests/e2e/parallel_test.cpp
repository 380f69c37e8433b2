#include "ActingTest.hpp"

#include <KeloAPI/api/Endpoint.hpp>

#include <array>
#include <atomic>
#include <thread>

namespace KeloAPI::testing {

class ParallelAtService : public ActingTest {};

TEST_F(ParallelAtService, ManyThreadsThroughOneSessionLoseNoCompletion) {
    constexpr int threads = 16;
    constexpr int callsEach = 8;
    std::atomic<int> sent = 0;
    int completed = 0;
    int posts = 0;
    int failed = 0;
    std::vector<std::thread> senders;
    for (int thread = 0; thread < threads; ++thread) {
        senders.emplace_back([&] {
            for (int call = 0; call < callsEach; ++call) {
                const auto endpoint = Endpoint::create(session);
                endpoint->setPath("timelines/all");
                endpoint->setParameters({{"size", 3}});
                endpoint->request(std::make_shared<PostParser>(),
                                  [&](std::vector<std::shared_ptr<KLWatchPost>> items,
                                      std::optional<Metadata>, const Timeline&,
                                      std::optional<Error> error) {
                                      ++completed;
                                      posts += static_cast<int>(items.size());
                                      failed += error ? 1 : 0;
                                  });
                ++sent;
            }
        });
    }
    const bool all = runUntil([&] { return completed == threads * callsEach; });
    for (std::thread& sender : senders) {
        sender.join();
    }
    EXPECT_TRUE(all);
    EXPECT_EQ(sent, threads * callsEach);
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(posts, threads * callsEach * 3);
}

TEST_F(ParallelAtService, CancellingSomeLeavesTheOthersAlone) {
    constexpr int calls = 40;
    int cancelled = 0;
    int succeeded = 0;
    std::vector<std::shared_ptr<EndpointRequest>> handles;
    for (int call = 0; call < calls; ++call) {
        const auto endpoint = Endpoint::create(session);
        endpoint->setPath("timelines/all");
        handles.push_back(
            endpoint->request([&](std::optional<std::string> text, std::optional<Error>) {
                ++(text ? succeeded : cancelled);
            }));
    }
    for (int call = 0; call < calls; call += 2) {
        handles[static_cast<std::size_t>(call)]->cancel();
    }
    EXPECT_TRUE(runUntil([&] { return cancelled + succeeded == calls; }));
    EXPECT_GE(succeeded, calls / 2);
    EXPECT_GT(cancelled, 0);
}

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
    std::array<std::size_t, 5> completed{};
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
            });
    }
    const bool all = runUntil(
        [&] {
            return loopLines == threads &&
                   completed == std::array{threads, threads, threads, threads, threads};
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
