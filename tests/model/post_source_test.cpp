#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPostSource.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::JsonText;

static_assert(!std::is_default_constructible_v<KLPostSource>);
static_assert(std::is_invocable_r_v<std::shared_ptr<KLPostSource>, decltype(KLPostSource::fromJSON),
                                    JsonObject>);

namespace {

std::shared_ptr<KLPostSource> parsedSource(const std::string& json) {
    return KLPostSource::fromJSON(JsonText(json).object());
}

/// A source with both identifiers and these members.
std::shared_ptr<KLPostSource> source(const std::string& members) {
    return parsedSource(R"({"postId":1,"userId":2,)" + members + "}");
}

} // namespace

TEST(PostSourceTest, ReadsAWholeObject) {
    const auto full = parsedSource(R"({"postId":12,"contentType":2,"userId":34,"username":"ann",
        "description":"caption","thumbnailUrl":"https://v.example/t","avatarUrl":"a/b"})");
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(full->postId(), "12");
    EXPECT_EQ(full->userId(), "34");
    EXPECT_EQ(full->username(), "ann");
    EXPECT_EQ(full->caption(), "caption");
    EXPECT_EQ(full->thumbnailUrl, URL::parse("https://v.example/t"));
    EXPECT_EQ(full->avatarUrl, URL::parse("a/b")) << "a relative reference is a URL";
    EXPECT_EQ(full->contentType(), KLPostSourceContentType::Video);
    full->avatarUrl = std::nullopt;
    full->thumbnailUrl = full->avatarUrl;
    EXPECT_EQ(full->thumbnailUrl, std::nullopt);
}

TEST(PostSourceTest, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<KLPostSource>(member); };
    const testing::Reads types = {{"true", "1"}, {"2.5", "2"}};
    const testing::KeyTable<KLPostSource>::Rules rules = {
        {"postId", "12", "12", showing(&KLPostSource::postId), testing::numberTexts(),
         testing::nothing},
        {"userId", "34", "34", showing(&KLPostSource::userId), testing::numberTexts(),
         testing::nothing},
        {"contentType", "3", "3",
         [](const KLPostSource& made) {
             return std::to_string(static_cast<int>(made.contentType()));
         },
         types, "0"},
        {"username", R"("ann")", "ann", showing(&KLPostSource::username), testing::texts(),
         testing::absent},
        {"description", R"("hi")", "hi", showing(&KLPostSource::caption), testing::texts(),
         testing::absent},
        {"thumbnailUrl", R"("a.jpg")", "a.jpg", showing(&KLPostSource::thumbnailUrl),
         testing::urls(), testing::absent},
        {"avatarUrl", R"("b.jpg")", "b.jpg", showing(&KLPostSource::avatarUrl), testing::urls(),
         testing::absent},
    };
    testing::KeyTable<KLPostSource>(KLPostSource::fromJSON, rules).check();
}

TEST(PostSourceTest, IdentifiersKeepTheirDigitsBeyond64Bits) {
    const auto large =
        parsedSource(R"({"postId":18446744073709551616,"userId":-99999999999999999999})");
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(large->postId(), "18446744073709551616");
    EXPECT_EQ(large->userId(), "-99999999999999999999");
}

TEST(PostSourceTest, NeedsBothIdentifiersAsNumbers) {
    for (const char* json :
         {"{}", R"({"postId":1})", R"({"userId":1})", R"({"postId":"1","userId":2})",
          R"({"postId":1,"userId":"2"})", R"({"postId":null,"userId":2})",
          R"({"postId":1,"userId":null})", R"({"postId":[1],"userId":2})"}) {
        EXPECT_EQ(parsedSource(json), nullptr) << json;
    }
    const auto bare = parsedSource(R"({"postId":1,"userId":2})");
    ASSERT_NE(bare, nullptr);
    EXPECT_EQ(bare->username(), std::nullopt);
    EXPECT_EQ(bare->caption(), std::nullopt);
    EXPECT_EQ(bare->avatarUrl, std::nullopt);
    EXPECT_EQ(bare->thumbnailUrl, std::nullopt);
    EXPECT_EQ(bare->contentType(), KLPostSourceContentType::Unknown);
}

TEST(PostSourceTest, IdentifiersAreDecimalText) {
    const auto large =
        parsedSource(R"({"postId":18446744073709551615,"userId":-9223372036854775808})");
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(large->postId(), "18446744073709551615");
    EXPECT_EQ(large->userId(), "-9223372036854775808");
    const auto odd = parsedSource(R"({"postId":1e3,"userId":true})");
    ASSERT_NE(odd, nullptr);
    EXPECT_EQ(odd->postId(), "1000");
    EXPECT_EQ(odd->userId(), "1");
}

TEST(PostSourceTest, AContentTypeOutsideItsValuesIsUnknown) {
    const std::pair<const char*, KLPostSourceContentType> table[] = {
        {"0", KLPostSourceContentType::Unknown},
        {"1", KLPostSourceContentType::Audio},
        {"2", KLPostSourceContentType::Video},
        {"3", KLPostSourceContentType::SoundboardAudio},
        {"4", KLPostSourceContentType::Unknown},
        {"7", KLPostSourceContentType::Unknown},
        {"-1", KLPostSourceContentType::Unknown},
        {"18446744073709551615", KLPostSourceContentType::Unknown},
        {"1e300", KLPostSourceContentType::Unknown},
        {"1.9", KLPostSourceContentType::Audio},
        {"\"1\"", KLPostSourceContentType::Unknown},
        {"null", KLPostSourceContentType::Unknown},
    };
    for (const auto& [value, expected] : table) {
        EXPECT_EQ(source(R"("contentType":)" + std::string(value))->contentType(), expected)
            << value;
    }
}

TEST(PostSourceTest, AContentTypeHasARawValue) {
    EXPECT_EQ(contentTypeOf(0), KLPostSourceContentType::Unknown);
    EXPECT_EQ(contentTypeOf(3), KLPostSourceContentType::SoundboardAudio);
    EXPECT_EQ(contentTypeOf(4), std::nullopt);
    EXPECT_EQ(contentTypeOf(-1), std::nullopt);
    EXPECT_EQ(contentTypeOf(INT64_MIN), std::nullopt);
    EXPECT_EQ(contentTypeOf(INT64_MAX), std::nullopt);
}

TEST(PostSourceTest, TextsAreTextOrAbsent) {
    for (const char* value : {"5", "null", "true", "{}", "[]"}) {
        EXPECT_EQ(source(R"("username":)" + std::string(value))->username(), std::nullopt);
        EXPECT_EQ(source(R"("description":)" + std::string(value))->caption(), std::nullopt);
        EXPECT_EQ(source(R"("avatarUrl":)" + std::string(value))->avatarUrl, std::nullopt);
    }
    EXPECT_EQ(source(R"("username":"")")->username(), "");
}

TEST(PostSourceTest, URLsThatAreNoneAreAbsent) {
    for (const char* value : {"", "a b", "http://h:x/", "\u00e4", "%"}) {
        const auto none = source(R"("avatarUrl":")" + std::string(value) + R"(","thumbnailUrl":")" +
                                 value + "\"");
        EXPECT_EQ(none->avatarUrl, std::nullopt) << value;
        EXPECT_EQ(none->thumbnailUrl, std::nullopt) << value;
    }
}

} // namespace KeloAPI
