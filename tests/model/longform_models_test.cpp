#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLEndlessLikesRange.hpp>
#include <KeloAPI/model/KLLongform.hpp>
#include <KeloAPI/model/KLPostProcessStatus.hpp>

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
        return std::to_string(static_cast<int>(status.state()));
    };
    checkParser<KLPostProcessStatusParser>(
        {{"state", R"("started")", "0", state, states, fails(insufficient)}});
}

} // namespace KeloAPI::testing
