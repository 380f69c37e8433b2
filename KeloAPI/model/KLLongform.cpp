#include <KeloAPI/model/KLLongform.hpp>

#include <utility>

namespace KeloAPI {

KLLongform::KLLongform(std::string longformId, URL url, double duration)
    : _longformId(std::move(longformId))
    , _url(std::move(url))
    , _duration(duration) {}

KLLongform::~KLLongform() = default;
KLLongformParser::~KLLongformParser() = default;

std::shared_ptr<KLLongform> KLLongformParser::parse(const JsonObject& json) const {
    const auto [longformId, videoUrl, duration, thumbnailUrl, aspectRatio] =
        json.values("longformId", "videoUrl", "duration", "thumbnailUrl", "aspectRatio");
    const auto id = longformId.text();
    if (!id) {
        throw JsonParseError(JsonParseError::InsufficientData, "longformId");
    }
    auto url = URL::parse(videoUrl.text().value_or(""));
    if (!url) {
        throw JsonParseError(JsonParseError::InsufficientData, "videoUrl");
    }
    const auto seconds = duration.real();
    if (!seconds) {
        throw JsonParseError(JsonParseError::InsufficientData, "duration");
    }
    auto longform = std::make_shared<KLLongform>(std::string(*id), *std::move(url), *seconds);
    longform->thumbnailUrl = URL::parse(thumbnailUrl.text().value_or(""));
    longform->aspectRatio = aspectRatio.real().value_or(1);
    return longform;
}

} // namespace KeloAPI
