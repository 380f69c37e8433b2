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
    KLVideoUrlBitrateSetting(URL remoteUrl, std::string format,
                             std::optional<std::string> identifier, double minBitrate,
                             std::optional<std::string> version);

    /// "videoUrl": where the file is fetched.
    const URL& remoteUrl() const { return _remoteUrl; }
    /// Names this file in every process and run: the identifier, "-" and the version where both are
    /// there, otherwise a number made from the URL, which may be negative. A setting that has
    /// neither them nor a URL of any characters stops the process.
    const std::string& uniqueId() const { return _uniqueId; }
    /// "format": one of `KLVideoFileFormat`'s as a rule.
    const std::string& format() const { return _format; }
    /// "rate": the lowest bitrate at which this file should be chosen, in the service's unit.
    double minBitrate() const { return _minBitrate; }
    /// The video's own identity; absent when it is not known.
    const std::optional<std::string>& identifier() const { return _identifier; }
    /// "id": the identity of this encoding; absent when the service gave none.
    const std::optional<std::string>& version() const { return _version; }

private:
    URL _remoteUrl;
    std::string _uniqueId;
    std::string _format;
    double _minBitrate;
    std::optional<std::string> _identifier;
    std::optional<std::string> _version;
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
