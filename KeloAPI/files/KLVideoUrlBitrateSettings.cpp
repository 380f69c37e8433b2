#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace KeloAPI {

namespace {

using Setting = std::shared_ptr<KLVideoUrlBitrateSetting>;

/// Ascending; not-a-number goes last, or the order would not be one that sorting needs.
bool goesBefore(const Setting& a, const Setting& b) {
    return a->minBitrate < b->minBitrate ||
           (std::isnan(b->minBitrate) && !std::isnan(a->minBitrate));
}

auto hasFormat(std::string_view format) {
    return [format](const Setting& setting) { return setting->format == format; };
}

} // namespace

KLVideoUrlBitrateSettings::KLVideoUrlBitrateSettings(Settings settings)
    : _settings(std::move(settings)) {
    std::sort(_settings.begin(), _settings.end(), goesBefore);
}

Setting KLVideoUrlBitrateSettings::settingForRemoteURL(const URL& url) const {
    const auto found =
        std::find_if(_settings.begin(), _settings.end(),
                     [&](const Setting& setting) { return setting->remoteUrl == url; });
    return found == _settings.end() ? nullptr : *found;
}

Setting KLVideoUrlBitrateSettings::settingForFormat(std::string_view format, double bitrate) const {
    Setting candidate;
    for (const Setting& setting : _settings) {
        if (setting->format != format) {
            continue;
        }
        if (setting->minBitrate > bitrate) {
            return candidate ? candidate : setting;
        }
        candidate = setting;
    }
    return candidate;
}

Setting KLVideoUrlBitrateSettings::highestSettingForFormat(std::string_view format) const {
    const auto found = std::find_if(_settings.rbegin(), _settings.rend(), hasFormat(format));
    return found == _settings.rend() ? nullptr : *found;
}

KLVideoUrlBitrateSettings::Settings
KLVideoUrlBitrateSettings::settingsForFormat(std::string_view format) const {
    Settings found;
    std::copy_if(_settings.begin(), _settings.end(), std::back_inserter(found), hasFormat(format));
    return found;
}

} // namespace KeloAPI
