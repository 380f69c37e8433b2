#pragma once

#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <memory>
#include <optional>
#include <string>

namespace KeloHost {

/// Reads what a post's record offers under "videoUrls". What is no offer is left out; a record
/// without any gives settings without offers.
class VideoOffersParser final : public KeloAPI::JsonParser<KeloAPI::KLVideoUrlBitrateSettings> {
public:
    explicit VideoOffersParser(std::string postId);
    std::shared_ptr<KeloAPI::KLVideoUrlBitrateSettings>
    parse(const KeloAPI::JsonObject& json) const override;

private:
    const std::string _postId;
};

/// The MP4 file for that bitrate, or the best one without a bitrate; null when none is offered.
std::shared_ptr<KeloAPI::KLVideoUrlBitrateSetting>
chosenOffer(const KeloAPI::KLVideoUrlBitrateSettings& offers, std::optional<double> bitrate);

/// True when the file has a name that it can be kept under.
bool hasFileName(const KeloAPI::KLVideoUrlBitrateSetting& offer);

} // namespace KeloHost
