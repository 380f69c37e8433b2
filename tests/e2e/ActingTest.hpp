#pragma once

#include "support/Awaited.hpp"
#include "support/EndpointCalls.hpp"
#include "support/ServiceTest.hpp"

namespace KeloAPI::testing {

/// A test whose user acts on what the stand-in has.
class ActingTest : public ServiceTest {
protected:
    static constexpr const char* longformId = "lf-unseen";

    std::vector<std::shared_ptr<KLWatchPost>> newestPosts(int size) {
        const auto endpoint = TimelineEndpoint::create("all");
        Parameters parameters = endpoint->parameters();
        parameters.insert_or_assign("size", size);
        endpoint->setParameters(std::move(parameters));
        const auto result = fetch(endpoint);
        EXPECT_TRUE(result.success());
        return result.success() ? result.success()->posts
                                : std::vector<std::shared_ptr<KLWatchPost>>{};
    }
    /// A recent post that the user has neither liked nor reposted. The request log starts after it.
    std::shared_ptr<KLWatchPost> untouchedPost() {
        std::shared_ptr<KLWatchPost> found;
        for (const auto& post : newestPosts(50)) {
            if (!found && post->liked == false && !post->rekeloed()) {
                found = post;
            }
        }
        EXPECT_NE(found, nullptr);
        service.requests();
        return found;
    }
    /// The same post, read from the timeline again.
    std::shared_ptr<KLWatchPost> again(const KLWatchPost& post) {
        for (const auto& candidate : newestPosts(50)) {
            if (candidate->postId == post.postId) {
                return candidate;
            }
        }
        ADD_FAILURE() << "the post has gone";
        return std::make_shared<KLWatchPost>();
    }
    nlohmann::json kept(const char* kind) {
        return service.call("GET", "/_service/actions").at(kind);
    }
    template <class E>
    auto toggled(const std::shared_ptr<E>& endpoint, bool on) {
        using Item = typename std::decay_t<decltype(*endpoint->parser())>::T;
        return awaited<PostActionResult<Item>>(
            [&](auto completion) { endpoint->toggle(on, completion); });
    }
};

} // namespace KeloAPI::testing
