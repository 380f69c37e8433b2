#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLVideoUpload.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

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
        return std::string(rawValue(made.processingInfo->state())) + " " +
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
