#include "Toggle.hpp"

#include <map>

using namespace KeloAPI;

namespace {

/// All posts of an author share it. Records do not tell, so that nobody is followed at the start.
Toggle* followOf(const std::string& authorId) {
    static std::map<std::string, Toggle*> known;
    Toggle*& follow = known[authorId];
    if (follow == nullptr) {
        follow = new Toggle(&Host::shared(), false, [authorId](bool on, const auto& completion) {
            UserEndpoint::create(authorId)->setFollowingOnTwitter(on, completion);
        });
    }
    return follow;
}

} // namespace

void addToggles(Row& row, QObject* owner) {
    const auto add = [&](const char* name, bool on, auto call) {
        row.shown[name] = QVariant::fromValue(new Toggle(owner, on, call));
    };
    const auto post = row.post;
    add("like", post->liked.value_or(false), [post](bool on, const auto& completion) {
        LikeActionEndpoint::create(post)->toggle(on, completion);
    });
    add("rekelo", post->rekeloed(), [post](bool on, const auto& completion) {
        RekeloActionEndpoint::create(post)->toggle(on, [=](const auto& result) {
            if (const auto* success = result.success()) {
                post->currentUserRekelo = on ? success->item : nullptr;
            }
            completion(result);
        });
    });
    add("less", false, [post](bool on, const auto& completion) {
        RecommendationsEndpoint::create()->addPostFeedback(
            *post->postId, on ? RecommendationBoost::Negative : RecommendationBoost::Neutral,
            completion);
    });
    row.shown["follow"] =
        QVariant::fromValue(followOf(row.shown["authorId"].toString().toStdString()));
}
