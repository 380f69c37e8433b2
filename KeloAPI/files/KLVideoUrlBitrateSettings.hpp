#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>

#include <memory>
#include <vector>

namespace KeloAPI {

/// All offers of one video, lowest bitrate first, and the choice among them. One thread at a time.
class KELO_API KLVideoUrlBitrateSettings final : public Object {
public:
    /// Offers, none of them null.
    using Settings = std::vector<std::shared_ptr<KLVideoUrlBitrateSetting>>;

    /// No offers.
    KLVideoUrlBitrateSettings() = default;
    /// Sorts `settings` by their minimum bitrate; among equal ones any order. None may be null.
    explicit KLVideoUrlBitrateSettings(Settings settings);

    const Settings& settings() const { return _settings; } ///< All offers, in their order.
    /// Keeps the settings as given: they must be in ascending order of their minimum bitrate, which
    /// every choice relies on. None may be null.
    void setSettings(Settings settings) { _settings = std::move(settings); }

    /// The first offer with that URL; null when there is none.
    std::shared_ptr<KLVideoUrlBitrateSetting> settingForRemoteURL(const URL& url) const;

    /// The offer of `format` for a connection of `bitrate`: the last whose minimum it reaches, else
    /// the first of the format. Null when the format is not offered.
    std::shared_ptr<KLVideoUrlBitrateSetting> settingForFormat(std::string_view format,
                                                               double bitrate) const;

    /// The offer of `format` with the highest minimum; null when the format is not offered.
    std::shared_ptr<KLVideoUrlBitrateSetting>
    highestSettingForFormat(std::string_view format) const;

    /// All offers of `format`, in their order.
    Settings settingsForFormat(std::string_view format) const;

private:
    Settings _settings;
};

} // namespace KeloAPI
