#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::fails;
using testing::JsonText;
using testing::KeyTable;

static_assert(!std::is_default_constructible_v<KLByline>);
static_assert(std::is_constructible_v<KLByline, const char*>);

namespace {

using testing::insufficient;

std::shared_ptr<KLByline> byline(const std::string& members) {
    return KLBylineParser().parse(
        JsonText(R"({"iconUrl":"https://i.example/b.png",)" + members + "}").object());
}

/// The titles of a byline's entities.
std::string titles(const KLByline& byline) {
    std::string titles;
    for (const auto& entity : byline.entities) {
        titles += entity->title() + ";";
    }
    return titles;
}

} // namespace

TEST(BylineTest, StartsWithItsTextAlone) {
    const KLByline byline("Featured");
    EXPECT_EQ(byline.text(), "Featured");
    EXPECT_EQ(byline.iconUrl, std::nullopt);
    EXPECT_TRUE(byline.entities.empty());
}

TEST(BylineParserTest, EveryKeyWithEveryKindOfValue) {
    testing::Reads bodies = testing::texts();
    bodies[R"("")"] = fails(insufficient);
    const KeyTable<KLByline>::Rules rules = {
        {"body", R"("Ann")", "Ann", testing::showing<KLByline>(&KLByline::text), bodies,
         fails(insufficient)},
        {"entities", R"([{"range":[0,1],"title":"a"}])", "a;", titles, {}, ""},
        {"iconUrl", R"("https://i.example/b.png")", "https://i.example/b.png",
         testing::showing<KLByline>(&KLByline::iconUrl), testing::urls(), fails(insufficient)},
    };
    KeyTable<KLByline>(testing::parseWith<KLBylineParser>(), rules).check();
}

TEST(BylineParserTest, LeavesOutEntitiesThatFail) {
    const auto made = byline(R"("body":"\ud83d\ude02 by ann","entities":[
        {"range":[5,8],"title":"ann","link":"kelo://user/1"}, {"title":"no range"},
        {"range":[0,99],"title":"too long"}, {"range":[2,1],"title":"reversed"},
        {"range":[0,1],"title":"emoji"}])");
    ASSERT_EQ(titles(*made), "ann;emoji;");
    EXPECT_EQ(made->entities[0]->range, (Range{6, 3}));
    EXPECT_EQ(made->entities[0]->applicationLink(), "kelo://user/1");
    EXPECT_EQ(made->entities[1]->range, (Range{0, 2}));
}

TEST(BylineParserTest, AListWithAnotherKindOfElementHasNoEntities) {
    for (const char* list : {R"([{"range":[0,1],"title":"a"},1])", R"([null])", R"([[]])"}) {
        EXPECT_TRUE(byline(R"("body":"x","entities":)" + std::string(list))->entities.empty())
            << list;
    }
}

TEST(BylineParserTest, WithoutAnIconIsRefusedHoweverGoodTheRestIs) {
    const JsonText json(R"({"body":"by ann","entities":[{"range":[3,6],"title":"ann"}]})");
    try {
        KLBylineParser().parse(json.object());
        FAIL();
    } catch (const JsonParseError& error) {
        EXPECT_EQ(error, JsonParseError(insufficient));
        EXPECT_EQ(std::get<std::string>(error.error().userInfo().at("key")), "iconUrl");
    }
}

} // namespace KeloAPI
