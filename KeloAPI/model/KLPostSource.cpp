#include <KeloAPI/model/KLPostSource.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLPostSource> KLPostSource::fromJSON(const JsonObject& json) {
    const auto [postIdNumber, contentType, userIdNumber, username, caption, thumbnailUrl,
                avatarUrl] = json.values("postId", "contentType", "userId", "username",
                                         "description", "thumbnailUrl", "avatarUrl");
    auto postId = postIdNumber.numberText();
    auto userId = userIdNumber.numberText();
    if (!postId || !userId) {
        return nullptr;
    }
    std::shared_ptr<KLPostSource> source(
        new KLPostSource(*std::move(postId), *std::move(userId), textOf(username), textOf(caption),
                         contentTypeOf(contentType.integer().value_or(0))
                             .value_or(KLPostSourceContentType::Unknown)));
    source->thumbnailUrl = urlOf(thumbnailUrl);
    source->avatarUrl = urlOf(avatarUrl);
    return source;
}

} // namespace KeloAPI
