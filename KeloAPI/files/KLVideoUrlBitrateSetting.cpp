#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/Hash.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <bit>

namespace KeloAPI {

namespace {

std::string uniqueIdOf(const URL& remoteUrl, const std::optional<std::string>& identifier,
                       const std::optional<std::string>& version) {
    if (identifier && version) {
        return *identifier + "-" + *version;
    }
    const std::string& text = remoteUrl.absoluteString();
    require(!text.empty(), "a bitrate setting needs a URL");
    // The value names cached files.
    return std::to_string(std::bit_cast<std::int64_t>(stableHash(text)));
}

} // namespace

KLVideoUrlBitrateSetting::KLVideoUrlBitrateSetting(URL url, std::string fileFormat,
                                                   std::optional<std::string> video,
                                                   double fromBitrate,
                                                   std::optional<std::string> encoding)
    : remoteUrl(std::move(url))
    , uniqueId(uniqueIdOf(remoteUrl, video, encoding))
    , format(std::move(fileFormat))
    , minBitrate(fromBitrate)
    , identifier(std::move(video))
    , version(std::move(encoding)) {}

KLVideoUrlBitrateSettingParser::KLVideoUrlBitrateSettingParser(std::string identifier)
    : _identifier(std::move(identifier)) {}

std::shared_ptr<KLVideoUrlBitrateSetting>
KLVideoUrlBitrateSettingParser::parse(const JsonObject& json) const {
    const auto [videoUrl, format, rate, id] = json.values("videoUrl", "format", "rate", "id");
    auto url = required(urlOf(videoUrl), "videoUrl");
    auto name = required(textOf(format), "format");
    return std::make_shared<KLVideoUrlBitrateSetting>(std::move(url), std::move(name), _identifier,
                                                      rate.real().value_or(0), textOf(id));
}

} // namespace KeloAPI
