#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLLike.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloAPI {

std::shared_ptr<KLLike> LikeParser::parse(const JsonObject& json) const {
    auto like = std::make_shared<KLLike>();
    const JsonValue likeId = json["likeId"];
    require(likeId.exists(), "a like has no \"likeId\"");
    like->likeId = likeId.description();
    like->user = parseUser(json);
    return like;
}

} // namespace KeloAPI
