#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<KLFeedInsert>);
static_assert(!std::is_default_constructible_v<KLPostsMosaic>);
static_assert(!std::is_default_constructible_v<KLUserMosaic>);
static_assert(!std::is_default_constructible_v<KLUrlAction>);
static_assert(std::is_constructible_v<KLUrlAction, const char*, const char*, const char*, URL, bool,
                                      std::nullopt_t, std::nullopt_t, std::nullopt_t,
                                      std::nullopt_t, std::nullopt_t>);
static_assert(!std::is_default_constructible_v<KLSolicitation>);
static_assert(std::is_constructible_v<KLSolicitation, const char*, bool, const char*>);
static_assert(static_cast<int>(KLPostsMosaicType::Unknown) == 0);
static_assert(static_cast<int>(KLPostsMosaicType::AvatarIncluded) == 1);
static_assert(static_cast<int>(KLPostsMosaicType::Default) == 2);
static_assert(static_cast<int>(KLPostsMosaicType::SmallThumbnails) == 3);

namespace {

/// "type" has one value that is right; whatever else stands there is of another kind.
template <class Model>
KeyRule<Model> typeRule(const std::string& type, const std::string& others) {
    Reads reads;
    for (const std::string& other : {others, std::string("urlaction"), type + ' '}) {
        reads['"' + other + '"'] = fails(incorrect);
    }
    const auto shows = [](const Model& /*made*/) { return std::string(); };
    return {"type", '"' + type + '"', "", shows, reads, fails(incorrect)};
}

} // namespace

TEST(FeedInsertTest, KeepsWhatItWasMadeOf) {
    const auto list = std::make_shared<KLPagedData>();
    const auto expectKept = [&](const auto& mosaic) {
        EXPECT_EQ(mosaic.title, "Title");
        EXPECT_EQ(mosaic.subtitle, "Description");
        EXPECT_EQ(mosaic.link, "kelo://x");
        EXPECT_EQ(mosaic.reference, "r1");
        EXPECT_TRUE(mosaic.closeable);
    };
    const KLPostsMosaic posts(list, "Title", "Description", "kelo://x", "r1", true,
                              KLPostsMosaicType::SmallThumbnails, false);
    expectKept(posts);
    EXPECT_EQ(posts.posts, list);
    EXPECT_EQ(posts.type, KLPostsMosaicType::SmallThumbnails);
    EXPECT_FALSE(posts.pinnable);
    const KLUserMosaic users(list, "Title", "Description", "kelo://x", "r1", true);
    expectKept(users);
    EXPECT_EQ(users.users, list);

    const KLPostsMosaic other(list, "", "", "", "", false, KLPostsMosaicType::Unknown, true);
    EXPECT_FALSE(other.closeable);
    EXPECT_TRUE(other.pinnable);
    EXPECT_EQ(KLFeedInsert("r1", true).reference, "r1");
    EXPECT_TRUE(KLFeedInsert("r1", true).closeable);
    EXPECT_FALSE(KLFeedInsert("r1", false).closeable);
}

TEST(MosaicDeathTest, WithoutAListStopsTheProcess) {
    EXPECT_DEATH(KLPostsMosaic(nullptr, "", "", "", "", false, KLPostsMosaicType::Default, false),
                 "^KeloAPI: contract violated: a mosaic of posts needs a list of posts\n$");
    EXPECT_DEATH(KLUserMosaic(nullptr, "", "", "", "", false),
                 "^KeloAPI: contract violated: a mosaic of users needs a list of users\n$");
}

TEST(UrlActionTest, WhatIsNotSaidIsNotCloseable) {
    const auto action = [](std::optional<bool> closeable) {
        return KLUrlAction("", "", "", URL::empty(), closeable, {}, {}, {}, {}, {}).closeable;
    };
    EXPECT_FALSE(action(std::nullopt));
    EXPECT_FALSE(action(false));
    EXPECT_TRUE(action(true));
    EXPECT_FALSE(KLSolicitation("", std::nullopt, {}).closeable);
    EXPECT_FALSE(KLSolicitation("", false, {}).closeable);
    EXPECT_TRUE(KLSolicitation("", true, {}).closeable);
}

TEST(UrlActionParserTest, EveryKeyWithEveryKindOfValue) {
    using A = KLUrlAction;
    checkParser<KLUrlActionParser>({
        typeRule<A>("urlAction", "solicitation"),
        {"reference", R"("r1")", "r1", &A::reference, texts(), fails(insufficient)},
        {"title", R"("Title")", "Title", &A::title, texts(), fails(insufficient)},
        {"actionTitle", R"("Open")", "Open", &A::actionTitle, texts(), fails(insufficient)},
        {"actionLink", R"("kelo://x")", "kelo://x", &A::actionUrl, urls(), fails(insufficient)},
        {"closeable", "true", "true", &A::closeable, flags(), "false"},
        {"backgroundImage", R"("a.png")", "a.png", &A::backgroundImage, urls(), absent},
        {"backgroundVideo", R"("a.mp4")", "a.mp4", &A::backgroundVideo, urls(), absent},
        {"description", R"("Details")", "Details", &A::details, texts(), absent},
        {"actionIcon", R"("i.png")", "i.png", &A::actionIcon, urls(), absent},
        {"closeUrlPath", R"("close/1")", "close/1", &A::closeUrlPath, texts(), absent},
    });
}

TEST(UrlActionParserTest, TheTypeIsJudgedFirstAndThenTheTextsInOrder) {
    EXPECT_EQ(failureOf<KLUrlActionParser>("{}"), fails(incorrect, "type"));
    std::string json = R"({"type":"urlAction")";
    for (const std::string key : {"reference", "title", "actionTitle", "actionLink"}) {
        EXPECT_EQ(failureOf<KLUrlActionParser>(json + "}"), fails(insufficient, key));
        json += ",\"" + key + "\":\"x\"";
    }
    EXPECT_EQ(failureOf<KLUrlActionParser>(json + "}"), "");
}

TEST(SolicitationParserTest, EveryKeyWithEveryKindOfValue) {
    using S = KLSolicitation;
    checkParser<KLSolicitationParser>({
        typeRule<S>("solicitation", "urlAction"),
        {"reference", R"("r1")", "r1", &S::reference, texts(), fails(insufficient)},
        {"closeable", "true", "true", &S::closeable, flags(), "false"},
        {"closeUrlPath", R"("close/1")", "close/1", &S::closeUrlPath, texts(), absent},
    });
    EXPECT_EQ(failureOf<KLSolicitationParser>(R"({"reference":7})"), fails(incorrect, "type"));
}

} // namespace KeloAPI::testing
