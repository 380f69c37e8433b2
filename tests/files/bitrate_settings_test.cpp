#include "support/KeyTable.hpp"

#include <KeloAPI/files/KLVideoFileFormat.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSettings.hpp>

#include <algorithm>
#include <limits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<KLVideoUrlBitrateSetting>);
static_assert(std::is_constructible_v<KLVideoUrlBitrateSetting, URL, const char*, const char*, int,
                                      const char*>);
static_assert(!std::is_default_constructible_v<KLVideoFileFormat>);
static_assert(KLVideoFileFormat::MP4 == "h264");
static_assert(KLVideoFileFormat::HLS == "hls");
static_assert(KLVideoFileFormat::PREVIEW == "h264-preview");

namespace {

const char* const videoUrl = "https://media.example/v/abc.mp4";

std::shared_ptr<KLVideoUrlBitrateSetting> named(std::optional<std::string> identifier,
                                                std::optional<std::string> version,
                                                const char* url = videoUrl) {
    return std::make_shared<KLVideoUrlBitrateSetting>(*URL::parse(url), "h264",
                                                      std::move(identifier), 500, version);
}

using Settings = KLVideoUrlBitrateSettings::Settings;

std::shared_ptr<KLVideoUrlBitrateSetting> setting(const std::string& format, double minBitrate) {
    const auto url = "https://media.example/" + format + "/" + std::to_string(minBitrate);
    return std::make_shared<KLVideoUrlBitrateSetting>(*URL::parse(url), format, std::nullopt,
                                                      minBitrate, std::nullopt);
}

std::vector<double> bitratesOf(const Settings& settings) {
    std::vector<double> bitrates;
    for (const auto& one : settings) {
        bitrates.push_back(one->minBitrate);
    }
    return bitrates;
}

double chosen(const KLVideoUrlBitrateSettings& settings, const char* format, double bitrate) {
    const auto found = settings.settingForFormat(format, bitrate);
    return found ? found->minBitrate : -1;
}

} // namespace

TEST(BitrateSetting, IsNamedByIdentifierAndVersionUnescaped) {
    EXPECT_EQ(named("1234", "77")->uniqueId, "1234-77");
    EXPECT_EQ(named("1-2", "3-4")->uniqueId, "1-2-3-4");
    EXPECT_EQ(named("", "")->uniqueId, "-");
}

TEST(BitrateSetting, IsNamedByTheHashOfItsUrlWhereEitherIsMissing) {
    // The 64-bit FNV-1a of the URL's text, reckoned by hand elsewhere.
    constexpr const char* hash = "-8203470007738517263";
    EXPECT_EQ(named(std::nullopt, std::nullopt)->uniqueId, hash);
    EXPECT_EQ(named("1234", std::nullopt)->uniqueId, hash);
    EXPECT_EQ(named(std::nullopt, "77")->uniqueId, hash);
    EXPECT_NE(named(std::nullopt, std::nullopt, "https://media.example/v/abd.mp4")->uniqueId, hash);
    // A positive one has no sign.
    EXPECT_EQ(named(std::nullopt, std::nullopt, "https://media.example/v/0.mp4")->uniqueId,
              "6232926789435820417");
}

TEST(BitrateSettingDeathTest, HasAUrlWhereItIsNamedByIt) {
    EXPECT_DEATH(KLVideoUrlBitrateSetting(URL::empty(), "h264", std::nullopt, 0, std::nullopt),
                 "a bitrate setting needs a URL");
    EXPECT_EQ(KLVideoUrlBitrateSetting(URL::empty(), "h264", "1", 0, "2").uniqueId, "1-2");
}

TEST(BitrateSettingParser, EveryKeyWithEveryKindOfValue) {
    using S = KLVideoUrlBitrateSetting;
    const KLVideoUrlBitrateSettingParser parser("42");
    checkKeys<S>([&](const JsonObject& json) { return parser.parse(json); },
                 {{"videoUrl", R"("a.mp4")", "a.mp4", &S::remoteUrl, urls(), fails(insufficient)},
                  {"format", R"("hls")", "hls", &S::format, texts(), fails(insufficient)},
                  {"rate", "0.5", "0.5", &S::minBitrate, reals(), "0"},
                  {"id", R"("77")", "77", &S::version, texts(), absent}});
    const JsonText json(R"({"videoUrl":"a.mp4","format":"hls","id":"7"})");
    EXPECT_EQ(parser.parse(json.object())->uniqueId, "42-7");
}

TEST(BitrateSettings, AreEmptyAtFirst) {
    const KLVideoUrlBitrateSettings none;
    EXPECT_TRUE(none.settings().empty());
    EXPECT_EQ(none.settingForFormat("h264", 500), nullptr);
    EXPECT_EQ(none.highestSettingForFormat("h264"), nullptr);
    EXPECT_TRUE(none.settingsForFormat("h264").empty());
    EXPECT_EQ(none.settingForRemoteURL(*URL::parse("https://media.example/")), nullptr);
}

TEST(BitrateSettings, AreKeptAsAssigned) {
    KLVideoUrlBitrateSettings settings({setting("h264", 1)});
    settings.setSettings({setting("h264", 1000), setting("h264", 200)});
    EXPECT_EQ(bitratesOf(settings.settings()), (std::vector<double>{1000, 200}));
    EXPECT_EQ(chosen(settings, "h264", 300), 1000) << "the choice relies on the order";
}

TEST(BitrateSettings, SortWhateverIsNoNumberLast) {
    Settings many;
    for (int i = 0; i < 100; ++i) {
        many.push_back(
            setting("h264", i % 3 == 0 ? std::numeric_limits<double>::quiet_NaN() : 100 - i));
    }
    const auto sorted = bitratesOf(KLVideoUrlBitrateSettings(many).settings());
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.begin() + 66));
    EXPECT_TRUE(std::all_of(sorted.begin() + 66, sorted.end(), [](double d) { return d != d; }));
}

TEST(BitrateSettings, MayAllHaveTheSameBitrate) {
    const Settings many(1000, setting("h264", 500));
    EXPECT_EQ(KLVideoUrlBitrateSettings(many).settings(), many);
}

TEST(BitrateSettings, ChooseTheLastThatTheBitrateReaches) {
    const KLVideoUrlBitrateSettings three(
        {setting("h264", 200), setting("h264", 500), setting("h264", 1000)});
    for (const auto& [bitrate, expected] :
         {std::pair(100.0, 200), std::pair(200.0, 200), std::pair(499.9, 200),
          std::pair(700.0, 500), std::pair(1000.0, 1000), std::pair(5000.0, 1000)}) {
        EXPECT_EQ(chosen(three, "h264", bitrate), expected) << bitrate;
    }
    EXPECT_EQ(three.settingForFormat("hls", 700), nullptr);
    EXPECT_EQ(three.settingForFormat("H264", 700), nullptr);
}

TEST(BitrateSettings, PassOverOtherFormats) {
    const KLVideoUrlBitrateSettings settings({setting("hls", 0), setting("h264", 200),
                                              setting("hls", 250), setting("h264", 500),
                                              setting("hls", 550), setting("own", 2000)});
    EXPECT_EQ(chosen(settings, "h264", 100), 200);
    EXPECT_EQ(chosen(settings, "h264", 400), 200);
    EXPECT_EQ(chosen(settings, "h264", 3000), 500);
    EXPECT_EQ(chosen(settings, "own", 1), 2000);
}

TEST(BitrateSettings, FindThoseOfAFormatInOrderAndTheHighest) {
    const KLVideoUrlBitrateSettings settings(
        {setting("h264", 500), setting("hls", 900), setting("h264", 200)});
    EXPECT_EQ(bitratesOf(settings.settingsForFormat("h264")), (std::vector<double>{200, 500}));
    EXPECT_TRUE(settings.settingsForFormat("none").empty());
    EXPECT_EQ(settings.highestSettingForFormat("h264")->minBitrate, 500);
    EXPECT_EQ(settings.highestSettingForFormat("hls")->minBitrate, 900);
    EXPECT_EQ(settings.highestSettingForFormat("h264-preview"), nullptr);
}

TEST(BitrateSettings, AreFoundByTheirUrl) {
    const auto url = *URL::parse("https://media.example/same");
    const auto low = std::make_shared<KLVideoUrlBitrateSetting>(url, "h264", "1", 1, "1");
    const auto high = std::make_shared<KLVideoUrlBitrateSetting>(url, "hls", "1", 2, "2");
    const KLVideoUrlBitrateSettings settings({high, low});
    EXPECT_EQ(settings.settingForRemoteURL(url), low) << "the first in order";
    EXPECT_EQ(settings.settingForRemoteURL(*URL::parse("https://media.example/Same")), nullptr);
}

} // namespace KeloAPI::testing
