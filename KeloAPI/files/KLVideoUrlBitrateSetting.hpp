#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// One offer of a video: a file in one format, for connections from one bitrate up. Does not change
/// once made.
class KELO_API KLVideoUrlBitrateSetting final : public Object {
public:
    /// Stores everything as given, and makes `uniqueId` of it.
    KLVideoUrlBitrateSetting(URL url, std::string fileFormat, std::optional<std::string> video,
                             double fromBitrate, std::optional<std::string> encoding);

    /// "videoUrl": where the file is fetched.
    const URL remoteUrl;
    /// Names this file in every process and run: the identifier, "-" and the version where both are
    /// there, otherwise a number made from the URL, which may be negative. A setting that has
    /// neither them nor a URL of any characters stops the process.
    const std::string uniqueId;
    /// "format": one of `KLVideoFileFormat`'s as a rule.
    const std::string format;
    /// "rate": the lowest bitrate at which this file should be chosen, in the service's unit.
    const double minBitrate;
    /// The video's own identity; absent when it is not known.
    const std::optional<std::string> identifier;
    /// "id": the identity of this encoding; absent when the service gave none.
    const std::optional<std::string> version;
};

/// Needs "videoUrl" as a URL and "format" as text (`InsufficientData`). "rate" is 0 where it is
/// not a number.
class KELO_API KLVideoUrlBitrateSettingParser final : public JsonParser<KLVideoUrlBitrateSetting> {
public:
    /// `identifier` becomes that of every setting made.
    explicit KLVideoUrlBitrateSettingParser(std::string identifier);

    const std::string& identifier() const { return _identifier; } ///< As given.
    std::shared_ptr<KLVideoUrlBitrateSetting> parse(const JsonObject& json) const override;

private:
    const std::string _identifier;
};

} // namespace KeloAPI
