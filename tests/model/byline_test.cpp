#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<KLByline>);
static_assert(std::is_constructible_v<KLByline, const char*>);

namespace {

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
    Reads bodies = texts();
    bodies[R"("")"] = fails(insufficient);
    const Reads mixedLists = {{R"([{"range":[0,1],"title":"a"},1])", ""}, {"[null]", ""}};
    const std::string icon = "https://i.example/b.png";
    checkParser<KLBylineParser>(
        {{"body", R"("Ann")", "Ann", &KLByline::text, bodies, fails(insufficient)},
         {"entities", R"([{"range":[0,1],"title":"a"}])", "a;", titles, mixedLists, ""},
         {"iconUrl", '"' + icon + '"', icon, &KLByline::iconUrl, urls(), fails(insufficient)}});
}

TEST(BylineParserTest, LeavesOutEntitiesThatFail) {
    const JsonText json(R"({"iconUrl":"b.png","body":"\ud83d\ude02 by ann","entities":[
        {"range":[5,8],"title":"ann","link":"kelo://user/1"}, {"title":"no range"},
        {"range":[0,99],"title":"too long"}, {"range":[2,1],"title":"reversed"},
        {"range":[0,1],"title":"emoji"}]})");
    const auto made = KLBylineParser().parse(json.object());
    ASSERT_EQ(titles(*made), "ann;emoji;");
    EXPECT_EQ(made->entities[0]->range, (Range{6, 3}));
    EXPECT_EQ(made->entities[0]->applicationLink(), "kelo://user/1");
    EXPECT_EQ(made->entities[1]->range, (Range{0, 2}));
}

} // namespace KeloAPI::testing
