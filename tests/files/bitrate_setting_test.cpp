#include "support/KeyTable.hpp"

#include <KeloAPI/files/KLVideoFileFormat.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>

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

std::shared_ptr<KLVideoUrlBitrateSetting> setting(std::optional<std::string> identifier,
                                                  std::optional<std::string> version,
                                                  const char* url = videoUrl) {
    return std::make_shared<KLVideoUrlBitrateSetting>(*URL::parse(url), "h264",
                                                      std::move(identifier), 500, version);
}

} // namespace

TEST(BitrateSetting, IsNamedByIdentifierAndVersionUnescaped) {
    EXPECT_EQ(setting("1234", "77")->uniqueId(), "1234-77");
    EXPECT_EQ(setting("1-2", "3-4")->uniqueId(), "1-2-3-4");
    EXPECT_EQ(setting("", "")->uniqueId(), "-");
}

TEST(BitrateSetting, IsNamedByTheHashOfItsUrlWhereEitherIsMissing) {
    // The 64-bit FNV-1a of the URL's text, reckoned by hand elsewhere.
    constexpr const char* hash = "-8203470007738517263";
    EXPECT_EQ(setting(std::nullopt, std::nullopt)->uniqueId(), hash);
    EXPECT_EQ(setting("1234", std::nullopt)->uniqueId(), hash);
    EXPECT_EQ(setting(std::nullopt, "77")->uniqueId(), hash);
    EXPECT_NE(setting(std::nullopt, std::nullopt, "https://media.example/v/abd.mp4")->uniqueId(),
              hash);
    // A positive one has no sign.
    EXPECT_EQ(setting(std::nullopt, std::nullopt, "https://media.example/v/0.mp4")->uniqueId(),
              "6232926789435820417");
}

TEST(BitrateSettingDeathTest, HasAUrlWhereItIsNamedByIt) {
    EXPECT_DEATH(KLVideoUrlBitrateSetting(URL::empty(), "h264", std::nullopt, 0, std::nullopt),
                 "a bitrate setting needs a URL");
    EXPECT_EQ(KLVideoUrlBitrateSetting(URL::empty(), "h264", "1", 0, "2").uniqueId(), "1-2");
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
    EXPECT_EQ(parser.parse(json.object())->uniqueId(), "42-7");
}

} // namespace KeloAPI::testing
