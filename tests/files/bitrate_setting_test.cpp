#include "support/JsonText.hpp"

#include <KeloAPI/files/KLVideoFileFormat.hpp>
#include <KeloAPI/files/KLVideoUrlBitrateSetting.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

namespace KeloAPI {

using testing::JsonText;

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

std::shared_ptr<KLVideoUrlBitrateSetting> parsed(const std::string& json) {
    const JsonText text(json);
    return KLVideoUrlBitrateSettingParser("42").parse(text.object());
}

} // namespace

TEST(BitrateSetting, KeepsWhatItWasMadeOf) {
    const auto made = setting("1234", "77");
    EXPECT_EQ(made->remoteUrl().absoluteString(), videoUrl);
    EXPECT_EQ(made->format(), "h264");
    EXPECT_EQ(made->identifier(), "1234");
    EXPECT_EQ(made->minBitrate(), 500);
    EXPECT_EQ(made->version(), "77");
}

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
}

TEST(BitrateSetting, WritesAPositiveHashWithoutSign) {
    EXPECT_EQ(setting(std::nullopt, std::nullopt, "https://media.example/v/0.mp4")->uniqueId(),
              "6232926789435820417");
}

TEST(BitrateSettingDeathTest, HasAUrlWhereItIsNamedByIt) {
    EXPECT_DEATH(KLVideoUrlBitrateSetting(URL::empty(), "h264", std::nullopt, 0, std::nullopt),
                 "a bitrate setting needs a URL");
    EXPECT_EQ(KLVideoUrlBitrateSetting(URL::empty(), "h264", "1", 0, "2").uniqueId(), "1-2");
}

TEST(BitrateSettingParser, ReadsEveryKey) {
    const auto made = parsed(
        R"({"videoUrl": "https://media.example/v/abc.mp4", "format": "hls", "rate": 0.5, "id": "7"})");
    EXPECT_EQ(made->remoteUrl().absoluteString(), videoUrl);
    EXPECT_EQ(made->format(), "hls");
    EXPECT_EQ(made->minBitrate(), 0.5);
    EXPECT_EQ(made->identifier(), "42");
    EXPECT_EQ(made->version(), "7");
    EXPECT_EQ(made->uniqueId(), "42-7");
}

TEST(BitrateSettingParser, NeedsUrlAndFormatOnly) {
    const auto made =
        parsed(R"({"videoUrl": "https://media.example/v/abc.mp4", "format": "h264"})");
    EXPECT_EQ(made->minBitrate(), 0);
    EXPECT_FALSE(made->version().has_value());
    EXPECT_EQ(made->uniqueId(), "-8203470007738517263");
}

TEST(BitrateSettingParser, ThrowsWithoutUrlOrFormat) {
    for (const char* json : {
             R"({"format": "h264"})",
             R"({"videoUrl": null, "format": "h264"})",
             R"({"videoUrl": 7, "format": "h264"})",
             R"({"videoUrl": "", "format": "h264"})",
             R"({"videoUrl": "no url", "format": "h264"})",
             R"({"videoUrl": ["https://media.example/a"], "format": "h264"})",
             R"({"videoUrl": "https://media.example/a"})",
             R"({"videoUrl": "https://media.example/a", "format": null})",
             R"({"videoUrl": "https://media.example/a", "format": 264})",
             R"({"videoUrl": "https://media.example/a", "format": {}})",
         }) {
        try {
            parsed(json);
            ADD_FAILURE() << json;
        } catch (const JsonParseError& error) {
            EXPECT_EQ(error.code(), JsonParseError::InsufficientData) << json;
        }
    }
}

TEST(BitrateSettingParser, TakesNothingButNumbersForTheRate) {
    const auto rateOf = [](const std::string& rate) {
        return parsed(R"({"videoUrl": "a", "format": "", "rate": )" + rate + "}")->minBitrate();
    };
    EXPECT_EQ(rateOf("500"), 500);
    EXPECT_EQ(rateOf("-1e3"), -1000);
    EXPECT_EQ(rateOf("true"), 1);
    EXPECT_EQ(rateOf(R"("500")"), 0);
    EXPECT_EQ(rateOf("null"), 0);
    EXPECT_EQ(rateOf("[500]"), 0);
}

TEST(BitrateSettingParser, TakesNothingButTextForTheVersion) {
    const auto versionOf = [](const std::string& id) {
        return parsed(R"({"videoUrl": "a", "format": "", "id": )" + id + "}")->version();
    };
    EXPECT_EQ(versionOf(R"("")"), "");
    EXPECT_EQ(versionOf("7"), std::nullopt);
    EXPECT_EQ(versionOf("null"), std::nullopt);
    EXPECT_EQ(versionOf("{}"), std::nullopt);
}

} // namespace KeloAPI
