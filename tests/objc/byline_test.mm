#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;
using Entity = KeloAPI::KLEntity;

namespace {

std::shared_ptr<Entity> entity(const char *title) {
    return std::make_shared<Entity>("7", "user", title, "", KeloAPI::Range{0, 3});
}

} // namespace

TEST(KLBylineTest, StartsWithItsTextAlone) {
    KLByline *byline = [[[KLByline alloc] initWithText:@"by Zo\u00eb \U0001F602"] autorelease];
    EXPECT_TRUE(same(byline.text, @"by Zo\u00eb \U0001F602"));
    EXPECT_EQ(byline.iconUrl, nil);
    EXPECT_TRUE(same(byline.entities, [NSArray array]));
}

TEST(KLBylineTest, KeepsItsIcon) {
    KLByline *byline = [[[KLByline alloc] initWithText:@"by Ann"] autorelease];
    NSURL *icon = [NSURL URLWithString:@"https://i.example/b.png"];
    byline.iconUrl = icon;
    EXPECT_TRUE(same(byline.iconUrl, icon));
    EXPECT_EQ(held<KeloAPI::KLByline>(byline).iconUrl->absoluteString(), "https://i.example/b.png");
    byline.iconUrl = nil;
    EXPECT_EQ(byline.iconUrl, nil);
}

TEST(KLBylineTest, KeepsItsEntities) {
    const auto ann = entity("ann");
    const auto bob = entity("bob");
    KLByline *byline = [[[KLByline alloc] initWithText:@"by Ann"] autorelease];
    byline.entities = [NSArray arrayWithObjects:wrap(ann), wrap(bob), nil];
    EXPECT_EQ(held<KeloAPI::KLByline>(byline).entities,
              (std::vector<std::shared_ptr<Entity>>{ann, bob}));
    EXPECT_EQ([byline.entities count], 2U);
    EXPECT_EQ([byline.entities objectAtIndex:1], wrap(bob));
    byline.entities = nil;
    EXPECT_TRUE(same(byline.entities, [NSArray array]));
}

TEST(KLBylineTest, TakesEntitiesAlone) {
    KLByline *byline = [[[KLByline alloc] initWithText:@"by Ann"] autorelease];
    byline.entities = [NSArray arrayWithObject:wrap(entity("ann"))];
    NSException *exception = raised([&] { byline.entities = [NSArray arrayWithObject:@"ann"]; });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
    EXPECT_EQ([byline.entities count], 1U);
}

TEST(KLBylineTest, StandsForWhatIsParsed) {
    const auto parsed = std::make_shared<KeloAPI::KLByline>("by ann");
    parsed->entities = {entity("ann")};
    KLByline *byline = wrap(parsed);
    EXPECT_TRUE([byline isMemberOfClass:[KLByline class]]);
    EXPECT_TRUE(same(byline.text, @"by ann"));
    EXPECT_EQ([byline.entities count], 1U);
}

TEST(KLBylineDeathTest, NeedsAText) {
    EXPECT_DEATH([[KLByline alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLByline\n");
}
