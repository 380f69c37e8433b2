#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <utility>

namespace KeloAPI {

KLLongform::KLLongform(std::string longformId, URL url, double duration)
    : _longformId(std::move(longformId))
    , _url(std::move(url))
    , _duration(duration) {}

KLLongform::~KLLongform() = default;

std::shared_ptr<KLLongform> KLLongformParser::parse(const JsonObject& json) const {
    const auto [longformId, videoUrl, duration, thumbnailUrl, aspectRatio] =
        json.values("longformId", "videoUrl", "duration", "thumbnailUrl", "aspectRatio");
    const auto id = required(longformId.text(), "longformId");
    auto url = required(URL::parse(videoUrl.text().value_or("")), "videoUrl");
    const auto seconds = required(duration.real(), "duration");
    auto longform = std::make_shared<KLLongform>(std::string(id), std::move(url), seconds);
    longform->thumbnailUrl = URL::parse(thumbnailUrl.text().value_or(""));
    longform->aspectRatio = aspectRatio.real().value_or(1);
    return longform;
}

} // namespace KeloAPI
