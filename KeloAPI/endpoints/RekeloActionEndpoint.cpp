#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>

namespace KeloAPI {

RekeloActionEndpoint::RekeloActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post)
    : PostActionEndpoint(key, post, std::make_shared<RekeloParser>()) {}

std::shared_ptr<RekeloActionEndpoint>
RekeloActionEndpoint::create(const std::shared_ptr<KLWatchPost>& post) {
    return make<RekeloActionEndpoint>(post);
}

void RekeloActionEndpoint::setPathFor(bool on) {
    const auto reposted = post();
    if (!reposted || !reposted->postId) {
        return;
    }
    const std::string repost = "posts/" + *reposted->postId + "/repost";
    const auto& rekelo = reposted->currentUserRekelo;
    if (on) {
        setPath(repost);
    } else if (rekelo && rekelo->rekeloId) {
        setPath(repost + "/" + *rekelo->rekeloId);
    }
}

} // namespace KeloAPI
