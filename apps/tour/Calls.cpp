#include "Calls.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

#include <utility>

namespace KeloTour {

using namespace KeloAPI;

namespace {

std::string described(const TimelineSuccess& page) {
    std::string text = std::to_string(page.posts.size()) + " posts";
    if (!page.posts.empty()) {
        const KLWatchPost& first = *page.posts.front();
        text += ", the first by " + (first.user ? first.user->username.value_or("?") : "?") + ": " +
                first.caption.value_or("");
    }
    return text;
}

} // namespace

void checkSuccess(const Error* error) {
    check(error == nullptr, "an error came: " + (error ? error->description() : std::string()));
}

void sendMe(Inbox<MeResult>& inbox) {
    MeEndpoint::create()->get([slot = inbox.slot()](const MeResult& result) { slot(result); });
}

std::string nameIn(const MeResult& result) {
    checkSuccess(result.error());
    return result.success()->user->username.value_or("");
}

Error errorIn(const MeResult& result) {
    check(result.error() != nullptr, "the call succeeded, which it must not");
    return *result.error();
}

TimelineSuccess read(const std::shared_ptr<TimelineEndpoint>& page) {
    check(page != nullptr, "there is no such page");
    Inbox<TimelineResult> inbox;
    page->fetch([slot = inbox.slot()](const TimelineResult& result) { slot(result); });
    const TimelineResult result = inbox.next();
    checkSuccess(result.error());
    came(described(*result.success()));
    return *result.success();
}

std::vector<std::shared_ptr<KLWatchPost>> newestPosts(int size) {
    const auto page = TimelineEndpoint::create("all");
    Parameters parameters = page->parameters();
    parameters["size"] = size;
    page->setParameters(std::move(parameters));
    return read(page).posts;
}

std::shared_ptr<KLWatchPost> untouchedPost() {
    for (const auto& post : newestPosts(50)) {
        if (post->liked == false && !post->rekeloed()) {
            return post;
        }
    }
    throw StepFailed("the user has liked or reposted all of them");
}

std::shared_ptr<KLWatchPost> readAgain(const KLWatchPost& post) {
    for (const auto& candidate : newestPosts(50)) {
        if (candidate->postId == post.postId) {
            return candidate;
        }
    }
    throw StepFailed("the post has gone");
}

std::shared_ptr<Endpoint> endpointAt(const std::string& path, Parameters parameters) {
    auto endpoint = Endpoint::create(Api::session(SessionType::Authenticated));
    endpoint->setPath(path);
    endpoint->setParameters(std::move(parameters));
    return endpoint;
}

std::string readText(const std::shared_ptr<Endpoint>& endpoint) {
    using Answer = std::pair<std::optional<std::string>, std::optional<Error>>;
    Inbox<Answer> inbox;
    endpoint->request(
        [slot = inbox.slot()](std::optional<std::string> text, std::optional<Error> error) {
            slot({std::move(text), std::move(error)});
        });
    Answer answer = inbox.next();
    checkSuccess(answer.second ? &*answer.second : nullptr);
    return answer.first.value_or("");
}

std::vector<std::string> idsOf(const std::vector<std::shared_ptr<KLWatchPost>>& posts) {
    std::vector<std::string> ids;
    ids.reserve(posts.size());
    for (const auto& post : posts) {
        ids.push_back(post->postId.value_or(""));
    }
    return ids;
}

} // namespace KeloTour
