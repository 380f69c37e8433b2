#include "commands/Commands.hpp"
#include "Text.hpp"

namespace KeloHost {

using namespace KeloAPI;

namespace {

using PostPointer = std::shared_ptr<KLWatchPost>;

PostPointer postOf(const Arguments& arguments) {
    auto post = std::make_shared<KLWatchPost>();
    post->postId = arguments.text("POST");
    return post;
}

/// The endpoint does not keep the post alive; the completion does, for a retry.
template <class ActionEndpoint, class Id>
void act(const HostPointer& host, const PostPointer& post, bool on, const std::string& deed,
         Id id) {
    ActionEndpoint::create(post)->toggle(on, [=](const auto& result) {
        host->hear(result.error(), [&] {
            const auto& item = result.success()->item;
            host->showDone(deed, *post->postId, item ? (*item).*id : std::nullopt);
        });
    });
}

void setFollowing(const HostPointer& host, const std::string& userId, bool on,
                  const std::string& deed) {
    UserEndpoint::create(userId)->setFollowingOnTwitter(on, [=](const UserResult& result) {
        host->hear(result.error(), [&] { host->showDone(deed, userId); });
    });
}

/// Reports how the call ended, as other calls do; a `LoopsEndpoint` by itself does not.
class AnsweredLoopsEndpoint : public LoopsEndpoint {
public:
    using Completion = std::function<void(const std::optional<Error>& error)>;

    std::shared_ptr<EndpointRequest> request(TextCompletion /*completionHandler*/) override {
        return Endpoint::request(
            std::make_shared<KLEmptyParser>(),
            [completion = _completion](const auto&, const auto&, const auto&,
                                       const std::optional<Error>& error) { completion(error); });
    }

protected:
    AnsweredLoopsEndpoint(Key key, Completion completion)
        : LoopsEndpoint(key)
        , _completion(std::move(completion)) {}

private:
    Completion _completion;
};

} // namespace

void like(const HostPointer& host, const Arguments& arguments) {
    act<LikeActionEndpoint>(host, postOf(arguments), true, "liked post", &KLLike::likeId);
}

void unlike(const HostPointer& host, const Arguments& arguments) {
    act<LikeActionEndpoint>(host, postOf(arguments), false, "unliked post", &KLLike::likeId);
}

void rekelo(const HostPointer& host, const Arguments& arguments) {
    act<RekeloActionEndpoint>(host, postOf(arguments), true, "reposted post", &KLRekelo::rekeloId);
}

void unrekelo(const HostPointer& host, const Arguments& arguments) {
    const std::string id = arguments.text("POST");
    // Asks for the post first: only the service knows which repost of it is the user's own.
    readRecords(host, "posts/" + id, std::make_shared<PostParser>(), [=](const auto& posts) {
        if (posts.empty() || !posts.front()->rekeloed()) {
            throw Failure(ExitCode::Failed, "post " + id + " is not reposted by this user");
        }
        act<RekeloActionEndpoint>(host, posts.front(), false, "took back the repost of post",
                                  &KLRekelo::rekeloId);
    });
}

void follow(const HostPointer& host, const Arguments& arguments) {
    setFollowing(host, arguments.text("USER"), true, "following user");
}

void unfollow(const HostPointer& host, const Arguments& arguments) {
    setFollowing(host, arguments.text("USER"), false, "no longer following user");
}

void boost(const HostPointer& host, const Arguments& arguments) {
    const std::string kind = arguments.text("KIND");
    const std::string id = arguments.text("ID");
    const std::string boost = arguments.text("BOOST");
    const auto completion = [=](const RecommendationResult& result) {
        host->hear(result.error(), [&] { host->showDone(boost + " feedback on " + kind, id); });
    };
    const auto endpoint = RecommendationsEndpoint::create();
    const auto value = recommendationBoostOf(boost).value();
    if (kind == "user") {
        endpoint->addUserFeedback(id, value, completion);
    } else {
        endpoint->addPostFeedback(id, value, completion);
    }
}

void submitLoops(const HostPointer& host, const Arguments& arguments) {
    const auto post = postOf(arguments);
    const std::int64_t count = arguments.number("COUNT");
    const auto completion = [=](const std::optional<Error>& error) {
        host->hear(error, [&] {
            host->showDone("reported " + countText(count, "loop") + " of post", *post->postId);
        });
    };
    Endpoint::make<AnsweredLoopsEndpoint>(completion)->submit(count, post);
}

} // namespace KeloHost
