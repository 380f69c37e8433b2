#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>

namespace KeloAPI {

LikeActionEndpoint::LikeActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post)
    : PostActionEndpoint(key, post, std::make_shared<LikeParser>()) {}

std::shared_ptr<LikeActionEndpoint>
LikeActionEndpoint::create(const std::shared_ptr<KLWatchPost>& post) {
    return make<LikeActionEndpoint>(post);
}

void LikeActionEndpoint::setPathFor(bool /*on*/) {
    const auto liked = post();
    if (liked && liked->postId) {
        setPath("posts/" + *liked->postId + "/likes");
    }
}

} // namespace KeloAPI
