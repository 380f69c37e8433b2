#include "VideoOffers.hpp"

#include <KeloAPI/files/KLVideoFileFormat.hpp>

#include <utility>

namespace KeloHost {

using namespace KeloAPI;

VideoOffersParser::VideoOffersParser(std::string postId)
    : _postId(std::move(postId)) {}

std::shared_ptr<KLVideoUrlBitrateSettings> VideoOffersParser::parse(const JsonObject& json) const {
    const auto offers = json["videoUrls"].objects().value_or(JsonObjectList());
    return std::make_shared<KLVideoUrlBitrateSettings>(
        KLVideoUrlBitrateSettingParser(_postId).parseArray(offers, true));
}

std::shared_ptr<KLVideoUrlBitrateSetting> chosenOffer(const KLVideoUrlBitrateSettings& offers,
                                                      std::optional<double> bitrate) {
    return bitrate ? offers.settingForFormat(KLVideoFileFormat::MP4, *bitrate)
                   : offers.highestSettingForFormat(KLVideoFileFormat::MP4);
}

bool hasFileName(const KLVideoUrlBitrateSetting& offer) {
    // The part of the URL that a `FileEndpoint` takes for the name.
    const std::string url = offer.remoteUrl().absoluteString();
    const std::string last = url.substr(url.rfind('/') + 1);
    const std::string name = last.substr(0, last.find('?'));
    return !name.empty() && name != "." && name != "..";
}

} // namespace KeloHost
