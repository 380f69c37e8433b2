#include "support/JsonText.hpp"

#include <KeloAPI/model/KLVideoUpload.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::JsonText;
using State = KLVideoUploadProcessingState;

static_assert(!std::is_default_constructible_v<KLVideoUpload>);
static_assert(std::is_constructible_v<KLVideoUpload, const char*>);
static_assert(!std::is_default_constructible_v<KLVideoUploadProcessingInfo>);
static_assert(std::is_constructible_v<KLVideoUploadProcessingInfo, State>);

namespace {

std::shared_ptr<KLVideoUpload> parsedUpload(const std::string& json) {
    const JsonText text(json);
    return KLVideoUploadParser().parse(text.object());
}

std::shared_ptr<KLVideoUpload> parsedWith(const std::string& members) {
    return parsedUpload(R"({"mediaId": "m", )" + members + "}");
}

double secondsFromNow(Date date) {
    return timeIntervalSince1970(date) - timeIntervalSince1970(Date::now());
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

TEST(VideoUpload, StartsWithItsIdentifierAlone) {
    const KLVideoUpload upload("m");
    EXPECT_EQ(upload.mediaId(), "m");
    EXPECT_FALSE(upload.expireDate);
    EXPECT_EQ(upload.processingInfo, nullptr);
    EXPECT_FALSE(upload.size);
    const KLVideoUploadProcessingInfo info(State::Pending);
    EXPECT_EQ(info.state(), State::Pending);
    EXPECT_FALSE(info.checkAfterSeconds);
    EXPECT_FALSE(info.progressPercent);
}

TEST(VideoUploadParser, ReadsEveryKey) {
    const auto upload = parsedUpload(
        R"({"mediaId": "m-1", "expiresAfterSecs": 3600, "size": 1048576, "processingInfo":
            {"state": "in_progress", "progressPercent": 42.5, "checkAfterSecs": 5}})");
    EXPECT_EQ(upload->mediaId(), "m-1");
    ASSERT_TRUE(upload->expireDate);
    EXPECT_NEAR(secondsFromNow(*upload->expireDate), 3600, 5);
    EXPECT_EQ(upload->size, 1048576);
    ASSERT_NE(upload->processingInfo, nullptr);
    EXPECT_EQ(upload->processingInfo->state(), State::InProgress);
    EXPECT_EQ(upload->processingInfo->progressPercent, 42.5);
    EXPECT_EQ(upload->processingInfo->checkAfterSeconds, 5);
}

TEST(VideoUploadParser, TakesTheIdentifierAsTextOrNumber) {
    EXPECT_EQ(parsedUpload(R"({"mediaId": 18446744073709551615})")->mediaId(),
              "18446744073709551615");
    EXPECT_EQ(parsedUpload(R"({"mediaId": ""})")->mediaId(), "");
    for (const char* json : {"{}", R"({"mediaId": null})", R"({"mediaId": []})"}) {
        try {
            parsedUpload(json);
            ADD_FAILURE() << json;
        } catch (const JsonParseError& error) {
            EXPECT_EQ(error.code(), JsonParseError::InsufficientData) << json;
        }
    }
}

TEST(VideoUploadParser, DropsUnusableOptionalValues) {
    const auto upload = parsedWith(
        R"("expiresAfterSecs": "3600", "size": "1", "processingInfo":
           {"state": "pending", "progressPercent": "1", "checkAfterSecs": null})");
    EXPECT_FALSE(upload->expireDate);
    EXPECT_FALSE(upload->size);
    ASSERT_NE(upload->processingInfo, nullptr);
    EXPECT_FALSE(upload->processingInfo->progressPercent);
    EXPECT_FALSE(upload->processingInfo->checkAfterSeconds);
}

TEST(VideoUploadParser, IgnoresProcessingInfoThatIsNoObject) {
    for (const char* info : {"\"pending\"", "null", "7", "[{\"state\": \"pending\"}]", "true"}) {
        EXPECT_EQ(parsedWith(std::string("\"processingInfo\": ") + info)->processingInfo, nullptr)
            << info;
    }
}

TEST(VideoUploadParser, RefusesAnUploadWhoseStateIsUnknown) {
    for (const char* info : {"{}", R"({"state": "done"})", R"({"state": 1})", R"({"state": null})",
                             R"({"state": "Pending", "progressPercent": 1})"}) {
        try {
            parsedWith(std::string("\"processingInfo\": ") + info);
            ADD_FAILURE() << info;
        } catch (const JsonParseError& error) {
            EXPECT_EQ(error.code(), JsonParseError::InsufficientData) << info;
        }
    }
}

TEST(VideoUploadParser, BearsAnyNumberOfSeconds) {
    const auto expiry = [](const char* seconds) {
        return *parsedWith(std::string("\"expiresAfterSecs\": ") + seconds)->expireDate;
    };
    EXPECT_NEAR(secondsFromNow(expiry("-10.5")), -10.5, 5);
    EXPECT_NEAR(secondsFromNow(expiry("true")), 1, 5);
    EXPECT_EQ(expiry("1e300"), Date::max());
    EXPECT_EQ(expiry("-1e300"), Date::min());
    EXPECT_EQ(expiry("9223372036855"), Date::max());
    EXPECT_EQ(expiry("-9230000000000"), Date::min());
    // From now, that is an instant; as a span of time alone, it would be beyond 64 bits.
    EXPECT_NEAR(secondsFromNow(expiry("-9224000000000")), -9224000000000.0, 5);
}

} // namespace KeloAPI
