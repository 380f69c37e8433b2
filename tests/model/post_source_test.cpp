#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPostSource.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<KLPostSource>);
static_assert(std::is_invocable_r_v<std::shared_ptr<KLPostSource>, decltype(KLPostSource::fromJSON),
                                    JsonObject>);
// The addresses may be changed.
static_assert(std::is_same_v<decltype(KLPostSource::thumbnailUrl), std::optional<URL>>);
static_assert(std::is_same_v<decltype(KLPostSource::avatarUrl), std::optional<URL>>);

TEST(PostSourceTest, EveryKeyWithEveryKindOfValue) {
    using S = KLPostSource;
    Reads ids = numberTexts();
    for (const char* beyond64Bits : {"18446744073709551616", "-99999999999999999999"}) {
        ids[beyond64Bits] = beyond64Bits;
    }
    ids["1e3"] = "1000";
    const auto type = [](const S& made) {
        return std::to_string(static_cast<int>(made.contentType()));
    };
    // What is outside the four values is unknown.
    const Reads types = {{"true", "1"}, {"2.5", "2"}, {"1.9", "1"}, {"1", "1"},
                         {"2", "2"},    {"4", "0"},   {"-1", "0"},  {"\"1\"", "0"}};
    Reads addresses = urls();
    for (const char* none : {R"("http://h:x/")", R"("\u00e4")", R"("%")"}) {
        addresses[none] = absent;
    }
    checkKeys<S>(S::fromJSON,
                 {{"postId", "12", "12", &S::postId, ids, nothing},
                  {"userId", "34", "34", &S::userId, ids, nothing},
                  {"contentType", "3", "3", type, types, "0"},
                  {"username", R"("ann")", "ann", &S::username, texts(), absent},
                  {"description", R"("hi")", "hi", &S::caption, texts(), absent},
                  {"thumbnailUrl", R"("a/b.jpg")", "a/b.jpg", &S::thumbnailUrl, addresses, absent},
                  {"avatarUrl", R"("b.jpg")", "b.jpg", &S::avatarUrl, addresses, absent}});
}

TEST(PostSourceTest, AContentTypeHasARawValue) {
    EXPECT_EQ(contentTypeOf(0), KLPostSourceContentType::Unknown);
    EXPECT_EQ(contentTypeOf(1), KLPostSourceContentType::Audio);
    EXPECT_EQ(contentTypeOf(2), KLPostSourceContentType::Video);
    EXPECT_EQ(contentTypeOf(3), KLPostSourceContentType::SoundboardAudio);
    for (const std::int64_t none : {std::int64_t{4}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        EXPECT_EQ(contentTypeOf(none), std::nullopt) << none;
    }
}

} // namespace KeloAPI::testing
