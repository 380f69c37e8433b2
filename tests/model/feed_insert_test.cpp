#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::absent;
using testing::fails;
using testing::JsonText;
using testing::KeyTable;

static_assert(!std::is_default_constructible_v<KLFeedInsert>);
static_assert(std::is_constructible_v<KLFeedInsert, const char*, bool>);
static_assert(!std::is_default_constructible_v<KLPostsMosaic>);
static_assert(
    std::is_constructible_v<KLPostsMosaic, std::shared_ptr<KLPagedData>, const char*, const char*,
                            const char*, const char*, bool, KLPostsMosaicType, bool>);
static_assert(!std::is_default_constructible_v<KLUserMosaic>);
static_assert(std::is_constructible_v<KLUserMosaic, std::shared_ptr<KLPagedData>, const char*,
                                      const char*, const char*, const char*, bool>);
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

using testing::insufficient;
constexpr auto incorrect = JsonParseError::IncorrectType;

/// The key of the error that a parser throws; empty when it throws none.
template <class P>
std::string keyAtFault(const std::string& json) {
    try {
        P().parse(JsonText(json).object());
        return "";
    } catch (const JsonParseError& error) {
        return std::get<std::string>(error.error().userInfo().at("key"));
    }
}

/// "type" has one value that is right; whatever else stands there is of another kind.
template <class Model>
testing::KeyRule<Model> typeRule(const std::string& type) {
    return {"type", '"' + type + '"', "", [](const Model&) { return ""; }, {}, fails(incorrect)};
}

} // namespace

TEST(FeedInsertTest, KeepsWhatItWasMadeOf) {
    const KLFeedInsert insert("r1", true);
    EXPECT_EQ(insert.reference(), "r1");
    EXPECT_TRUE(insert.closeable());
    EXPECT_FALSE(KLFeedInsert("r1", false).closeable());
}

TEST(PostsMosaicTest, KeepsWhatItWasMadeOf) {
    const auto posts = std::make_shared<KLPagedData>();
    const KLPostsMosaic mosaic(posts, "Title", "Description", "kelo://x", "r1", true,
                               KLPostsMosaicType::SmallThumbnails, true);
    EXPECT_EQ(mosaic.posts(), posts);
    EXPECT_EQ(mosaic.title(), "Title");
    EXPECT_EQ(mosaic.subtitle(), "Description");
    EXPECT_EQ(mosaic.link(), "kelo://x");
    EXPECT_EQ(mosaic.reference(), "r1");
    EXPECT_TRUE(mosaic.closeable());
    EXPECT_EQ(mosaic.type(), KLPostsMosaicType::SmallThumbnails);
    EXPECT_TRUE(mosaic.pinnable());
    const KLPostsMosaic other(posts, "", "", "", "", false, KLPostsMosaicType::Unknown, true);
    EXPECT_FALSE(other.closeable());
    EXPECT_TRUE(other.pinnable());
}

TEST(UserMosaicTest, KeepsWhatItWasMadeOf) {
    const auto users = std::make_shared<KLPagedData>();
    const KLUserMosaic mosaic(users, "Title", "Description", "kelo://x", "r1", true);
    EXPECT_EQ(mosaic.users(), users);
    EXPECT_EQ(mosaic.title(), "Title");
    EXPECT_EQ(mosaic.subtitle(), "Description");
    EXPECT_EQ(mosaic.link(), "kelo://x");
    EXPECT_EQ(mosaic.reference(), "r1");
    EXPECT_TRUE(mosaic.closeable());
}

TEST(MosaicDeathTest, WithoutAListStopsTheProcess) {
    EXPECT_DEATH(KLPostsMosaic(nullptr, "", "", "", "", false, KLPostsMosaicType::Default, false),
                 "^KeloAPI: contract violated: a mosaic of posts needs a list of posts\n$");
    EXPECT_DEATH(KLUserMosaic(nullptr, "", "", "", "", false),
                 "^KeloAPI: contract violated: a mosaic of users needs a list of users\n$");
}

TEST(UrlActionTest, KeepsWhatItWasMadeOf) {
    const auto url = [](const char* text) { return *URL::parse(text); };
    const KLUrlAction action("r1", "Title", "Action", url("a"), true, url("b"), url("c"), "Details",
                             url("d"), "close/1");
    EXPECT_EQ(action.reference(), "r1");
    EXPECT_EQ(action.title(), "Title");
    EXPECT_EQ(action.actionTitle(), "Action");
    EXPECT_EQ(action.actionUrl(), url("a"));
    EXPECT_TRUE(action.closeable());
    EXPECT_EQ(action.backgroundImage(), url("b"));
    EXPECT_EQ(action.backgroundVideo(), url("c"));
    EXPECT_EQ(action.details(), "Details");
    EXPECT_EQ(action.actionIcon(), url("d"));
    EXPECT_EQ(action.closeUrlPath(), "close/1");
}

TEST(UrlActionTest, WhatIsNotSaidIsNotCloseable) {
    const auto action = [](std::optional<bool> closeable) {
        return KLUrlAction("", "", "", URL::empty(), closeable, {}, {}, {}, {}, {}).closeable();
    };
    EXPECT_FALSE(action(std::nullopt));
    EXPECT_FALSE(action(false));
    EXPECT_TRUE(action(true));
    EXPECT_FALSE(KLSolicitation("", std::nullopt, {}).closeable());
    EXPECT_FALSE(KLSolicitation("", false, {}).closeable());
    EXPECT_TRUE(KLSolicitation("", true, {}).closeable());
}

TEST(UrlActionParserTest, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<KLUrlAction>(member); };
    using testing::flags;
    using testing::texts;
    using testing::urls;
    const KeyTable<KLUrlAction>::Rules rules = {
        typeRule<KLUrlAction>("urlAction"),
        {"reference", R"("r1")", "r1", showing(&KLUrlAction::reference), texts(),
         fails(insufficient)},
        {"title", R"("Title")", "Title", showing(&KLUrlAction::title), texts(),
         fails(insufficient)},
        {"actionTitle", R"("Open")", "Open", showing(&KLUrlAction::actionTitle), texts(),
         fails(insufficient)},
        {"actionLink", R"("kelo://x")", "kelo://x", showing(&KLUrlAction::actionUrl), urls(),
         fails(insufficient)},
        {"closeable", "true", "true", showing(&KLUrlAction::closeable), flags(), "false"},
        {"backgroundImage", R"("a.png")", "a.png", showing(&KLUrlAction::backgroundImage), urls(),
         absent},
        {"backgroundVideo", R"("a.mp4")", "a.mp4", showing(&KLUrlAction::backgroundVideo), urls(),
         absent},
        {"description", R"("Details")", "Details", showing(&KLUrlAction::details), texts(), absent},
        {"actionIcon", R"("i.png")", "i.png", showing(&KLUrlAction::actionIcon), urls(), absent},
        {"closeUrlPath", R"("close/1")", "close/1", showing(&KLUrlAction::closeUrlPath), texts(),
         absent},
    };
    KeyTable<KLUrlAction>(testing::parseWith<KLUrlActionParser>(), rules).check();
}

TEST(UrlActionParserTest, TheTypeIsJudgedFirstAndToTheLetter) {
    for (const char* type : {"solicitation", "urlaction", "UrlAction", "urlAction ", ""}) {
        const std::string json = R"({"type":")" + std::string(type) + R"(","reference":"r",
            "title":"t","actionTitle":"a","actionLink":"b"})";
        EXPECT_EQ(keyAtFault<KLUrlActionParser>(json), "type") << type;
    }
    EXPECT_EQ(keyAtFault<KLUrlActionParser>("{}"), "type");
    EXPECT_EQ(keyAtFault<KLSolicitationParser>(R"({"type":"urlAction","reference":"r"})"), "type");
    EXPECT_EQ(keyAtFault<KLSolicitationParser>(R"({"reference":7})"), "type");
}

TEST(UrlActionParserTest, TheFirstMissingTextIsTheOneAtFault) {
    const std::pair<const char*, const char*> table[] = {
        {R"({"type":"urlAction"})", "reference"},
        {R"({"type":"urlAction","reference":"r"})", "title"},
        {R"({"type":"urlAction","reference":"r","title":"t"})", "actionTitle"},
        {R"({"type":"urlAction","reference":"r","title":"t","actionTitle":"a"})", "actionLink"},
        {R"({"type":"urlAction","reference":"r","title":"t","actionTitle":"a","actionLink":"b c"})",
         "actionLink"},
        {R"({"type":"urlAction","reference":"r","title":"t","actionTitle":"a","actionLink":"b"})",
         ""},
    };
    for (const auto& [json, key] : table) {
        EXPECT_EQ(keyAtFault<KLUrlActionParser>(json), key) << json;
    }
}

TEST(SolicitationParserTest, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<KLSolicitation>(member); };
    const KeyTable<KLSolicitation>::Rules rules = {
        typeRule<KLSolicitation>("solicitation"),
        {"reference", R"("r1")", "r1", showing(&KLSolicitation::reference), testing::texts(),
         fails(insufficient)},
        {"closeable", "true", "true", showing(&KLSolicitation::closeable), testing::flags(),
         "false"},
        {"closeUrlPath", R"("close/1")", "close/1", showing(&KLSolicitation::closeUrlPath),
         testing::texts(), absent},
    };
    KeyTable<KLSolicitation>(testing::parseWith<KLSolicitationParser>(), rules).check();
}

TEST(SolicitationTest, KeepsWhatItWasMadeOf) {
    const KLSolicitation solicitation("r1", true, "close/1");
    EXPECT_EQ(solicitation.reference(), "r1");
    EXPECT_TRUE(solicitation.closeable());
    EXPECT_EQ(solicitation.closeUrlPath(), "close/1");
    EXPECT_EQ(KLSolicitation("r1", true, std::nullopt).closeUrlPath(), std::nullopt);
}

} // namespace KeloAPI
