#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

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

TEST(LongformParser, EveryKeyWithEveryKindOfValue) {
    using L = KLLongform;
    checkParser<KLLongformParser>({
        {"longformId", R"("lf-1")", "lf-1", &L::longformId, texts(), fails(insufficient)},
        {"videoUrl", R"("a.mp4")", "a.mp4", &L::url, urls(), fails(insufficient)},
        {"duration", "90.5", "90.5", &L::duration, reals(), fails(insufficient)},
        {"aspectRatio", "0.5625", "0.5625", &L::aspectRatio, reals(), "1"},
        {"thumbnailUrl", R"("a.jpg")", "a.jpg", &L::thumbnailUrl, urls(), absent},
        // No answer sets it.
        {"canPreload", "true", "false", &L::canPreload, {}, "false"},
    });
}

TEST(EndlessLikesRangeParser, EveryKeyWithEveryKindOfValue) {
    using L = KLEndlessLikesRange;
    checkParser<KLEndlessLikesRangeParser>({
        {"count", "11", "11", &L::count, reals(), fails(insufficient)},
        {"startTime", "1.5", "1.5", &L::startTime, reals(), fails(insufficient)},
        {"endTime", "12", "12", &L::endTime, reals(), fails(insufficient)},
        {"level", "13", "13", &L::level, reals(), fails(insufficient)},
    });
}

TEST(PostProcessStatusParser, TellsAnUnknownStateFromAMissingOne) {
    Reads states = texts();
    for (auto& [text, shows] : states) {
        shows = fails(invalid);
    }
    states[R"("Started")"] = states[R"("started ")"] = fails(invalid);
    states[R"("completed")"] = "1";
    states[R"("failed")"] = "2";
    const auto state = [](const KLPostProcessStatus& status) {
        return std::to_string(static_cast<int>(status.state));
    };
    checkParser<KLPostProcessStatusParser>(
        {{"state", R"("started")", "0", state, states, fails(insufficient)}});
}

using State = KLVideoUploadProcessingState;

static_assert(!std::is_default_constructible_v<KLVideoUpload>);
static_assert(std::is_constructible_v<KLVideoUpload, const char*>);
static_assert(!std::is_default_constructible_v<KLVideoUploadProcessingInfo>);
static_assert(std::is_constructible_v<KLVideoUploadProcessingInfo, State>);

namespace {

/// Whether an instant lies so many seconds from now, give or take a minute.
void expectSecondsFromNow(Date date, double seconds) {
    EXPECT_NEAR(timeIntervalSince1970(date) - timeIntervalSince1970(Date::now()), seconds, 60);
}

} // namespace

TEST(VideoUploadProcessingState, HasItsTextsAndNoOthers) {
    for (const auto& [state, text] :
         {std::pair(State::InProgress, "in_progress"), std::pair(State::Pending, "pending"),
          std::pair(State::Succeeded, "succeeded"), std::pair(State::Failed, "failed")}) {
        EXPECT_EQ(rawValue(state), text);
        EXPECT_EQ(videoUploadProcessingStateOf(text), state);
    }
    for (const char* other : {"", "done", "Pending", "in progress", "failed "}) {
        EXPECT_FALSE(videoUploadProcessingStateOf(other)) << other;
    }
}

TEST(VideoUploadParser, EveryKeyWithEveryKindOfValue) {
    using U = KLVideoUpload;
    const auto expires = [](const U& made) { return made.expireDate.has_value(); };
    Reads expiries;
    for (const auto& [number, text] : reals()) {
        expiries[number] = "true";
    }
    const auto info = [](const U& made) {
        if (!made.processingInfo) {
            return std::string(absent);
        }
        return std::string(rawValue(made.processingInfo->state)) + " " +
               shown(made.processingInfo->progressPercent) + " " +
               shown(made.processingInfo->checkAfterSeconds);
    };
    // An object needs a state that is known; whatever else stands there is no object.
    Reads infos = {
        {R"({"state":"succeeded"})", "succeeded (absent) (absent)"},
        {R"({"state":"pending","progressPercent":"1","checkAfterSecs":null})",
         "pending (absent) (absent)"},
    };
    for (const char* unknown : {"{}", R"({"text":"text"})", R"({"state":"done"})", R"({"state":1})",
                                R"({"state":null})", R"({"state":"Pending"})"}) {
        infos[unknown] = fails(insufficient, "state");
    }
    checkParser<KLVideoUploadParser>({
        {"mediaId", R"("m-1")", "m-1", &U::mediaId, identifiers(), fails(insufficient)},
        {"expiresAfterSecs", "3600", "true", expires, expiries, "false"},
        {"size", "1048576", "1048576", &U::size, integers(), absent},
        {"processingInfo", R"({"state":"in_progress","progressPercent":42.5,"checkAfterSecs":5})",
         "in_progress 42.5 5", info, infos, absent},
    });
}

TEST(VideoUploadParser, BearsAnyNumberOfSeconds) {
    const auto expiry = [](const char* seconds) {
        const JsonText json(R"({"mediaId":"m","expiresAfterSecs":)" + std::string(seconds) + "}");
        return *KLVideoUploadParser().parse(json.object())->expireDate;
    };
    expectSecondsFromNow(expiry("3600"), 3600);
    expectSecondsFromNow(expiry("-10.5"), -10.5);
    expectSecondsFromNow(expiry("true"), 1);
    EXPECT_EQ(expiry("1e300"), Date::max());
    EXPECT_EQ(expiry("-1e300"), Date::min());
    EXPECT_EQ(expiry("9223372036855"), Date::max());
    EXPECT_EQ(expiry("-9230000000000"), Date::min());
    // From now, that is an instant; as a span of time alone, it would be beyond 64 bits.
    expectSecondsFromNow(expiry("-9224000000000"), -9224000000000.0);
}

} // namespace KeloAPI::testing
