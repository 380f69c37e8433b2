#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

namespace {

/// The URL of the default rendition, which is the one of rate 0.
std::optional<std::string> defaultRendition(const JsonValue& videoUrls) {
    const auto renditions = videoUrls.objects().value_or(JsonObjectList());
    for (const JsonObject rendition : renditions) {
        const auto [videoUrl, rate] = rendition.values("videoUrl", "rate");
        if (videoUrl.text() && rate.integer() == 0) {
            return textOf(videoUrl);
        }
    }
    return std::nullopt;
}

} // namespace

std::shared_ptr<KLWatchPost> PostParser::parse(const JsonObject& json) const {
    const auto [postId, description, created, thumbnailUrl, liked, myRepostId, videoUrls] =
        json.values("postId", "description", "created", "thumbnailUrl", "liked", "myRepostId",
                    "videoUrls");
    auto post = std::make_shared<KLWatchPost>();
    require(postId.exists(), "a post record has no \"postId\"");
    post->postId = postId.description();
    post->caption = textOrEmpty(description);
    if (const auto text = created.text()) {
        post->created = dateFormatter().date(*text);
    }
    post->thumbnailUrl = textOrEmpty(thumbnailUrl);
    post->liked = liked.boolean();
    if (const auto repostId = myRepostId.integer()) {
        post->currentUserRekelo = std::make_shared<KLRekelo>();
        post->currentUserRekelo->rekeloId = std::to_string(*repostId);
    }
    post->videoUrl = defaultRendition(videoUrls);
    post->user = parseUser(json);
    return post;
}

} // namespace KeloAPI
