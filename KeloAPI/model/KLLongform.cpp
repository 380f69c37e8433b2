#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLLongform> KLLongformParser::parse(const JsonObject& json) const {
    const auto [longformId, videoUrl, duration, thumbnailUrl, aspectRatio] =
        json.values("longformId", "videoUrl", "duration", "thumbnailUrl", "aspectRatio");
    auto id = required(textOf(longformId), "longformId");
    auto url = required(urlOf(videoUrl), "videoUrl");
    const auto seconds = required(duration.real(), "duration");
    auto longform = std::make_shared<KLLongform>(std::move(id), std::move(url), seconds);
    longform->thumbnailUrl = urlOf(thumbnailUrl);
    longform->aspectRatio = aspectRatio.real().value_or(1);
    return longform;
}

} // namespace KeloAPI
