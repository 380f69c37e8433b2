#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;
using Venue = KeloAPI::KLVenue;
using VenueCategory = KeloAPI::KLVenueCategory;

namespace {

KLVenueCategory *category() {
    KLVenueCategory *category =
        [[[KLVenueCategory alloc] initWithCategoryId:@"c1" shortName:@"Coffee"] autorelease];
    category.iconUrl = [NSURL URLWithString:@"https://i.example/c32.png"];
    return category;
}

KLVenue *venue() {
    KLVenue *venue = [[[KLVenue alloc] initWithFoursquareVenueId:@"v1"
                                                            name:@"Caf\u00e9"] autorelease];
    venue.address = @"1 Main St";
    venue.city = @"Lisbon";
    venue.state = @"LX";
    venue.country = @"PT";
    venue.latitude = 38.7;
    venue.longitude = -9.25;
    venue.category = category();
    return venue;
}

void expectWhole(KLVenue *venue) {
    ASSERT_TRUE([venue isMemberOfClass:[KLVenue class]]);
    EXPECT_TRUE(same(venue.foursquareVenueId, @"v1"));
    EXPECT_TRUE(same(venue.name, @"Caf\u00e9"));
    EXPECT_TRUE(same(venue.address, @"1 Main St"));
    EXPECT_TRUE(same(venue.city, @"Lisbon"));
    EXPECT_TRUE(same(venue.state, @"LX"));
    EXPECT_TRUE(same(venue.country, @"PT"));
    EXPECT_EQ(venue.latitude, 38.7);
    EXPECT_EQ(venue.longitude, -9.25);
    EXPECT_TRUE(same(venue.category.categoryId, @"c1"));
    EXPECT_TRUE(same(venue.category.shortName, @"Coffee"));
    EXPECT_TRUE(same(venue.category.iconUrl, [NSURL URLWithString:@"https://i.example/c32.png"]));
}

} // namespace

TEST(KLVenueTest, StartsWithIdentifierAndNameAlone) {
    KLVenue *venue = [[[KLVenue alloc] initWithFoursquareVenueId:@"v1" name:@"Cafe"] autorelease];
    EXPECT_TRUE(same(venue.foursquareVenueId, @"v1"));
    EXPECT_TRUE(same(venue.name, @"Cafe"));
    EXPECT_EQ(venue.address, nil);
    EXPECT_EQ(venue.city, nil);
    EXPECT_EQ(venue.state, nil);
    EXPECT_EQ(venue.country, nil);
    EXPECT_EQ(venue.latitude, 0);
    EXPECT_EQ(venue.longitude, 0);
    EXPECT_EQ(venue.category, nil);
}

TEST(KLVenueTest, KeepsWhatIsSet) {
    KLVenue *whole = venue();
    expectWhole(whole);
    const Venue &there = held<Venue>(whole);
    EXPECT_EQ(there.address, "1 Main St");
    EXPECT_EQ(there.city, "Lisbon");
    EXPECT_EQ(there.state, "LX");
    EXPECT_EQ(there.country, "PT");
    KLVenueCategory *other = category();
    whole.category = other;
    EXPECT_EQ(whole.category, other);
    whole.address = whole.city = whole.state = whole.country = nil;
    whole.category = nil;
    EXPECT_EQ(whole.address, nil);
    EXPECT_EQ(there.city, std::nullopt);
    EXPECT_EQ(there.state, std::nullopt);
    EXPECT_EQ(there.country, std::nullopt);
    EXPECT_EQ(there.category, nullptr);
}

TEST(KLVenueTest, ItsCategoryLivesOnWithIt) {
    KLVenue *whole = venue();
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    whole.category = category();
    [pool drain];
    EXPECT_TRUE(same(whole.category.shortName, @"Coffee"));
}

TEST(KLVenueTest, EncodesEveryPropertyInOrder) {
    KLVenue *whole = venue();
    NSString *lines = [NSString stringWithFormat:@"object foursquareVenueId v1\n"
                                                  "object name %@\n"
                                                  "object address 1 Main St\n"
                                                  "object city Lisbon\n"
                                                  "object state LX\n"
                                                  "object country PT\n"
                                                  "double latitude 38.7\n"
                                                  "double longitude -9.25\n"
                                                  "object category %@\n",
                                                 whole.name, whole.category];
    EXPECT_TRUE(same(KeloEncodedLines(whole), lines));
}

TEST(KLVenueTest, ComesOutOfItsArchive) {
    expectWhole(archivedAndBack(venue()));
    KLVenue *bare = archivedAndBack([[[KLVenue alloc] initWithFoursquareVenueId:@"v2"
                                                                           name:@""] autorelease]);
    EXPECT_TRUE(same(bare.foursquareVenueId, @"v2"));
    EXPECT_TRUE(same(bare.name, @""));
    EXPECT_EQ(bare.address, nil);
    EXPECT_EQ(bare.latitude, 0);
    EXPECT_EQ(bare.category, nil);
}

TEST(KLVenueTest, BothLanguagesReadEachOthersArchives) {
    KLVenue *whole = venue();
    expectWhole(readHere(std::dynamic_pointer_cast<Venue>(shared(whole))));
    const auto there = readThere<Venue>(whole);
    ASSERT_TRUE(there);
    expectWhole(wrap(there));
}

TEST(KLVenueTest, AnArchiveNeedNotHaveEverything) {
    KLVenue *venue = unarchived(KeloArchiveOf(@"KLVenue", [NSDictionary dictionary]));
    ASSERT_TRUE([venue isMemberOfClass:[KLVenue class]]);
    EXPECT_TRUE(same(venue.foursquareVenueId, @""));
    EXPECT_TRUE(same(venue.name, @""));
    EXPECT_EQ(venue.country, nil);
    EXPECT_EQ(venue.longitude, 0);
    EXPECT_EQ(venue.category, nil);
}

TEST(KLVenueTest, WhatIsOfAnotherKindInAnArchiveIsMissing) {
    KLVenue *venue = unarchived(KeloArchiveOf(
        @"KLVenue", [NSDictionary dictionaryWithObjectsAndKeys:@"v1", @"foursquareVenueId",
                                                               [NSNumber numberWithInt:5], @"name",
                                                               [NSNumber numberWithInt:6], @"city",
                                                               @"Coffee", @"category", nil]));
    EXPECT_TRUE(same(venue.foursquareVenueId, @"v1"));
    EXPECT_TRUE(same(venue.name, @""));
    EXPECT_EQ(venue.city, nil);
    EXPECT_EQ(venue.category, nil);
}

TEST(KLVenueCategoryTest, StartsWithIdentifierAndNameAlone) {
    KLVenueCategory *category =
        [[[KLVenueCategory alloc] initWithCategoryId:@"c1" shortName:@"Coffee"] autorelease];
    EXPECT_TRUE(same(category.categoryId, @"c1"));
    EXPECT_TRUE(same(category.shortName, @"Coffee"));
    EXPECT_EQ(category.iconUrl, nil);
}

TEST(KLVenueCategoryTest, EncodesEveryPropertyInOrder) {
    EXPECT_TRUE(same(KeloEncodedLines(category()), @"object categoryId c1\n"
                                                    "object shortName Coffee\n"
                                                    "object iconUrl https://i.example/c32.png\n"));
}

TEST(KLVenueCategoryTest, BothLanguagesReadEachOthersArchives) {
    const auto there = readThere<VenueCategory>(category());
    ASSERT_TRUE(there);
    EXPECT_EQ(there->categoryId(), "c1");
    EXPECT_EQ(there->shortName(), "Coffee");
    EXPECT_EQ(there->iconUrl->absoluteString(), "https://i.example/c32.png");
    there->iconUrl.reset();
    KLVenueCategory *here = readHere(there);
    ASSERT_TRUE([here isMemberOfClass:[KLVenueCategory class]]);
    EXPECT_TRUE(same(here.categoryId, @"c1"));
    EXPECT_TRUE(same(here.shortName, @"Coffee"));
    EXPECT_EQ(here.iconUrl, nil);
}

TEST(KLVenueCategoryTest, KeepsAnEmptyIcon) {
    KLVenueCategory *one = category();
    one.iconUrl = [NSURL URLWithString:@""];
    EXPECT_TRUE(same([one.iconUrl absoluteString], @""));
    KLVenueCategory *again = archivedAndBack(one);
    EXPECT_TRUE(same([again.iconUrl absoluteString], @""));
}

TEST(KLVenueCategoryTest, AnArchiveNeedNotHaveEverything) {
    KLVenueCategory *category =
        unarchived(KeloArchiveOf(@"KLVenueCategory", [NSDictionary dictionary]));
    ASSERT_TRUE([category isMemberOfClass:[KLVenueCategory class]]);
    EXPECT_TRUE(same(category.categoryId, @""));
    EXPECT_TRUE(same(category.shortName, @""));
    EXPECT_EQ(category.iconUrl, nil);
}

TEST(KLVenueDeathTest, NeedsIdentifierAndName) {
    EXPECT_DEATH([[KLVenue alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLVenue\n");
    EXPECT_DEATH([[KLVenueCategory alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLVenueCategory\n");
}
