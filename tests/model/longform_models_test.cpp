#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::JsonText;

static_assert(!std::is_default_constructible_v<KLLongform>);
static_assert(std::is_constructible_v<KLLongform, const char*, URL, int>);
static_assert(!std::is_default_constructible_v<KLEndlessLikesRange>);
static_assert(std::is_constructible_v<KLEndlessLikesRange, double, double, double, double>);
static_assert(!std::is_default_constructible_v<KLPostProcessStatus>);
static_assert(std::is_constructible_v<KLPostProcessStatus, KLPostProcessStatusState>);
static_assert(postProcessStatusStateOf(0) == KLPostProcessStatusState::Started);
static_assert(postProcessStatusStateOf(1) == KLPostProcessStatusState::Completed);
static_assert(postProcessStatusStateOf(2) == KLPostProcessStatusState::Failed);
static_assert(!postProcessStatusStateOf(3) && !postProcessStatusStateOf(-1));

namespace {

template <class P>
std::shared_ptr<typename P::T> parsed(const std::string& json) {
    const JsonText text(json);
    return P().parse(text.object());
}

/// The code of what the parser throws; -1 when it throws nothing.
template <class P>
int thrownBy(const std::string& json) {
    try {
        parsed<P>(json);
        return -1;
    } catch (const JsonParseError& error) {
        return error.code();
    }
}

} // namespace

TEST(Longform, StartsWithDefaults) {
    const KLLongform longform("lf-1", *URL::parse("https://media.example/1.mp4"), 90.5);
    EXPECT_EQ(longform.longformId(), "lf-1");
    EXPECT_EQ(longform.url().absoluteString(), "https://media.example/1.mp4");
    EXPECT_EQ(longform.duration(), 90.5);
    EXPECT_EQ(longform.aspectRatio, 1);
    EXPECT_FALSE(longform.thumbnailUrl);
    EXPECT_FALSE(longform.canPreload);
}

TEST(LongformParser, ReadsEveryKey) {
    const auto longform = parsed<KLLongformParser>(
        R"({"longformId": "lf-1", "videoUrl": "https://media.example/1.mp4", "duration": 90.5,
            "thumbnailUrl": "https://media.example/1.jpg", "aspectRatio": 0.5625,
            "canPreload": true})");
    EXPECT_EQ(longform->longformId(), "lf-1");
    EXPECT_EQ(longform->url().absoluteString(), "https://media.example/1.mp4");
    EXPECT_EQ(longform->duration(), 90.5);
    EXPECT_EQ(longform->thumbnailUrl, URL::parse("https://media.example/1.jpg"));
    EXPECT_EQ(longform->aspectRatio, 0.5625);
    EXPECT_FALSE(longform->canPreload) << "no answer sets it";
}

TEST(LongformParser, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<KLLongform>(member); };
    const std::string insufficient = testing::fails(JsonParseError::InsufficientData);
    const testing::KeyTable<KLLongform>::Rules rules = {
        {"longformId", R"("lf-1")", "lf-1", showing(&KLLongform::longformId), testing::texts(),
         insufficient},
        {"videoUrl", R"("a.mp4")", "a.mp4", showing(&KLLongform::url), testing::urls(),
         insufficient},
        {"duration", "90.5", "90.5", showing(&KLLongform::duration), testing::reals(),
         insufficient},
        {"aspectRatio", "0.5", "0.5", showing(&KLLongform::aspectRatio), testing::reals(), "1"},
        {"thumbnailUrl", R"("a.jpg")", "a.jpg", showing(&KLLongform::thumbnailUrl), testing::urls(),
         testing::absent},
    };
    testing::KeyTable<KLLongform>(testing::parseWith<KLLongformParser>(), rules).check();
}

TEST(EndlessLikesRangeParser, EveryKeyWithEveryKindOfValue) {
    using Likes = KLEndlessLikesRange;
    const auto showing = [](auto member) { return testing::showing<Likes>(member); };
    const std::string insufficient = testing::fails(JsonParseError::InsufficientData);
    const testing::KeyTable<Likes>::Rules rules = {
        {"count", "11", "11", showing(&Likes::count), testing::reals(), insufficient},
        {"startTime", "1.5", "1.5", showing(&Likes::startTime), testing::reals(), insufficient},
        {"endTime", "12", "12", showing(&Likes::endTime), testing::reals(), insufficient},
        {"level", "13", "13", showing(&Likes::level), testing::reals(), insufficient},
    };
    testing::KeyTable<Likes>(testing::parseWith<KLEndlessLikesRangeParser>(), rules).check();
}

TEST(LongformParser, FallsBackWhereAnOptionalKeyIsUnusable) {
    for (const char* rest : {
             "",
             R"(, "thumbnailUrl": "no url", "aspectRatio": "0.5")",
             R"(, "thumbnailUrl": 7, "aspectRatio": null)",
             R"(, "thumbnailUrl": null, "aspectRatio": [])",
         }) {
        const auto longform = parsed<KLLongformParser>(
            std::string(R"({"longformId": "lf-1", "videoUrl": "a", "duration": 1)") + rest + "}");
        EXPECT_EQ(longform->aspectRatio, 1) << rest;
        EXPECT_FALSE(longform->thumbnailUrl) << rest;
    }
}

TEST(LongformParser, NeedsItsKeys) {
    for (const char* json : {
             R"({"videoUrl": "a", "duration": 1})",
             R"({"longformId": 7, "videoUrl": "a", "duration": 1})",
             R"({"longformId": null, "videoUrl": "a", "duration": 1})",
             R"({"longformId": "1", "duration": 1})",
             R"({"longformId": "1", "videoUrl": "", "duration": 1})",
             R"({"longformId": "1", "videoUrl": "no url", "duration": 1})",
             R"({"longformId": "1", "videoUrl": 1, "duration": 1})",
             R"({"longformId": "1", "videoUrl": "a"})",
             R"({"longformId": "1", "videoUrl": "a", "duration": "1"})",
             R"({"longformId": "1", "videoUrl": "a", "duration": null})",
         }) {
        EXPECT_EQ(thrownBy<KLLongformParser>(json), JsonParseError::InsufficientData) << json;
    }
}

TEST(EndlessLikesRangeParser, ReadsFourNumbers) {
    const auto range = parsed<KLEndlessLikesRangeParser>(
        R"({"count": 12, "startTime": 1.5, "endTime": 3, "level": 2})");
    EXPECT_EQ(range->count(), 12);
    EXPECT_EQ(range->startTime(), 1.5);
    EXPECT_EQ(range->endTime(), 3);
    EXPECT_EQ(range->level(), 2);
}

TEST(EndlessLikesRangeParser, NeedsAllOfThem) {
    const std::vector<std::string> members = {R"("count": 1)", R"("startTime": 1)",
                                              R"("endTime": 1)", R"("level": 1)"};
    for (std::size_t missing = 0; missing < members.size(); ++missing) {
        for (const char* instead : {"", ": null", ": \"1\"", ": {}"}) {
            std::string json;
            for (std::size_t i = 0; i < members.size(); ++i) {
                std::string member = members[i];
                if (i == missing) {
                    member = *instead == 0 ? "" : member.substr(0, member.find(':')) + instead;
                }
                json += (json.empty() || member.empty() ? "" : ", ") + member;
            }
            EXPECT_EQ(thrownBy<KLEndlessLikesRangeParser>("{" + json + "}"),
                      JsonParseError::InsufficientData)
                << json;
        }
    }
}

TEST(PostProcessStatusParser, ReadsTheThreeStates) {
    using State = KLPostProcessStatusState;
    EXPECT_EQ(parsed<KLPostProcessStatusParser>(R"({"state": "started"})")->state(),
              State::Started);
    EXPECT_EQ(parsed<KLPostProcessStatusParser>(R"({"state": "completed"})")->state(),
              State::Completed);
    EXPECT_EQ(parsed<KLPostProcessStatusParser>(R"({"state": "failed"})")->state(), State::Failed);
}

TEST(PostProcessStatusParser, TellsUnknownFromMissing) {
    for (const char* json :
         {R"({"state": "Started"})", R"({"state": ""})", R"({"state": "started "})"}) {
        EXPECT_EQ(thrownBy<KLPostProcessStatusParser>(json), JsonParseError::InvalidData) << json;
    }
    for (const char* json : {"{}", R"({"state": 0})", R"({"state": null})", R"({"state": []})"}) {
        EXPECT_EQ(thrownBy<KLPostProcessStatusParser>(json), JsonParseError::InsufficientData)
            << json;
    }
}

} // namespace KeloAPI
