#include <KeloAPI/api/Endpoint.hpp>

#include <KeloAPI/model/KLWatchPost.hpp>

#include "support/ServiceTest.hpp"

#include <atomic>
#include <thread>

namespace KeloAPI {

using testing::runUntil;

class ParallelAtService : public testing::ServiceTest {};

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
        handles.push_back(endpoint->request(
            [&](std::optional<std::string> text, std::optional<Error>) {
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

} // namespace KeloAPI
