// What models write into archives, and what they read out of those of both languages.
#include "objc/HostCode.h"
#include "objc/KeyedArchives.hpp"
#include "objc/Models.hpp"
#include "objc/ObjcTest.hpp"
#include "objc/Told.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <limits>

using namespace KeloBridge;
using namespace KeloObjcTest;
using KeloAPI::LoopData;

namespace {

/// An archived class: a whole object of it, what of that comes out of its archive, and the keys.
struct ArchivedModel {
    id object;
    const char *properties;
    const char *read;
    NSString *keys;
    /// By way of the C++ library: reads the object's archive, and archives it anew.
    id (*there)(id object);
    /// What the C++ library archives of the object's own C++ object, which has all that is
    /// archived.
    id (*natively)(id object);
    /// What an archive with nothing in it gives.
    const char *empty;
};

template <class T>
id thereAndBack(id object) {
    const auto there = readThere<T>(object);
    return there == nullptr ? nil : readHere(there);
}

/// What the C++ library archives of this object's own C++ object.
template <class T>
id archivedThere(id object) {
    return readHere(std::dynamic_pointer_cast<T>(toNative(object)));
}

std::vector<ArchivedModel> archivedModels() {
    return {
        {wholeChannel(), channelKeys,
         R"("12" "Cats" "ffffff" "123456" <https://i.example/1> <https://i.example/2> nil 0 )"
         R"(1433146150.5s "All about cats" nil nil 0)",
         @"object channelId, object name, object created, object iconUrl, object iconRetinaUrl, "
         @"object fontColorHex, object backgroundColorHex, object channelDescription",
         thereAndBack<KeloAPI::KLChannel>, archivedThere<KeloAPI::KLChannel>,
         R"("" "" "000000" "000000" nil nil nil 0 nil nil nil nil 0)"},
        {wholeVenue(), venueKeys,
         R"("v1" "Café" "1 Main St" "Lisbon" "LX" "PT" 38.7 -9.25 KLVenueCategory)",
         @"object foursquareVenueId, object name, object address, object city, object state, "
         @"object country, double latitude, double longitude, object category",
         thereAndBack<KeloAPI::KLVenue>, archivedThere<KeloAPI::KLVenue>,
         R"("" "" nil nil nil nil 0 0 nil)"},
        {wholeCategory(), categoryKeys, R"("c1" "Coffee" <https://i.example/c32.png>)",
         @"object categoryId, object shortName, object iconUrl",
         thereAndBack<KeloAPI::KLVenueCategory>, archivedThere<KeloAPI::KLVenueCategory>,
         R"("" "" nil)"},
        {entity(@"9", @"mention", @"Mia"), entityKeys,
         R"("9" "mention" "Mia" " | kelo://a | b" "kelo://a | b" {3, 4})",
         @"object idString, object type, object title, object link, value range",
         thereAndBack<KeloAPI::KLEntity>, archivedThere<KeloAPI::KLEntity>,
         R"(nil nil "" "" "" {0, 0})"},
        {entity(nil, nil, nil), entityKeys, R"(nil nil "" " | kelo://a | b" "kelo://a | b" {3, 4})",
         @"object idString, object type, object title, object link, value range",
         thereAndBack<KeloAPI::KLEntity>, archivedThere<KeloAPI::KLEntity>,
         R"(nil nil "" "" "" {0, 0})"},
        {tag(@"5", @"caf\u00e9"), tagKeys, R"("5" "#café" "café" 0)", @"object tagId, object name",
         thereAndBack<KeloAPI::KLTag>, archivedThere<KeloAPI::KLTag>, R"("" "" "" 0)"},
        {sound(@"https://s.example/b.m4a", YES, @"12"), soundKeys,
         R"("Bell" "8001" <https://s.example/b.m4a> 1 "12")",
         @"object soundUrl, object name, object sourcePostId, object soundId, bool featured",
         thereAndBack<KeloAPI::SoundboardSound>, archivedThere<KeloAPI::SoundboardSound>,
         "nil nil nil nil nil"},
        {sound(@"", NO, nil), soundKeys, R"("Bell" "8001" <> 0 nil)",
         @"object soundUrl, object name, object sourcePostId, object soundId, bool featured",
         thereAndBack<KeloAPI::SoundboardSound>, archivedThere<KeloAPI::SoundboardSound>,
         "nil nil nil nil nil"},
        {thumbnail(), thumbnailKeys, "<https://cdn.example/a.jpg> 640 9223372036854775807",
         @"object url, integer width 640, integer height 9223372036854775807",
         thereAndBack<KeloAPI::PostThumbnail>, archivedThere<KeloAPI::PostThumbnail>,
         "nil nil nil"},
        {wholeLoops(), loopKeys, "42 2.5 1400000000.25s 1",
         @"value count, value velocity, object created, bool onFire", thereAndBack<LoopData>,
         archivedThere<LoopData>, "nil nil nil nil"},
    };
}

/// An archive of the class with these members, and the address, where there is one, under its key.
id unarchivedWith(NSString *className, const char *members, NSString *key = nil) {
    NSMutableDictionary *all = [NSMutableDictionary dictionaryWithDictionary:json(members)];
    if (key != nil) {
        [all setObject:address(@"https://s.example/") forKey:key];
    }
    return unarchived(KeloArchiveOf(className, all));
}

constexpr uint64_t most = std::numeric_limits<uint64_t>::max();

} // namespace

TEST(ArchivesTest, ObjectsComeOutOfTheirArchives) {
    for (const ArchivedModel &one : archivedModels()) {
        id read = archivedAndBack(one.object);
        EXPECT_TRUE([read isMemberOfClass:[one.object class]]);
        EXPECT_EQ(told(read, one.properties), one.read);
        EXPECT_TRUE(same(KeloEncodedKeys(one.object), one.keys));
    }
}

TEST(ArchivesTest, BothLanguagesReadEachOthers) {
    for (const ArchivedModel &one : archivedModels()) {
        id back = one.there(one.object);
        EXPECT_TRUE([back isMemberOfClass:[one.object class]]);
        EXPECT_EQ(told(back, one.properties), one.read);
        EXPECT_EQ(told(one.natively(one.object), one.properties), one.read);
    }
}

TEST(ArchivesTest, NeedNotHaveEverything) {
    for (const ArchivedModel &one : archivedModels()) {
        NSString *name = NSStringFromClass([one.object class]);
        EXPECT_EQ(told(unarchived(KeloArchiveOf(name, [NSDictionary dictionary])), one.properties),
                  one.empty);
    }
}

TEST(ArchivesTest, WhatIsOfAnotherKindIsMissing) {
    EXPECT_EQ(told(unarchivedWith(@"KLVenue", R"({"foursquareVenueId": "v1", "name": 5, "city": 6,
                                                  "category": "Coffee"})"),
                   "foursquareVenueId name city category"),
              R"("v1" "" nil nil)");
    const char *named = R"({"name": "Bell", "soundId": "8001"})";
    EXPECT_EQ(unarchivedWith(@"SoundboardSound", R"({"name": "Bell"})", @"soundId"), nil);
    EXPECT_EQ(unarchivedWith(@"SoundboardSound", R"({"name": "Bell", "soundId": "8001",
                                                     "soundUrl": "https://s.example/"})"),
              nil);
    EXPECT_EQ(unarchivedWith(@"SoundboardSound", named, @"sourcePostId"), nil);
    EXPECT_EQ(told(unarchivedWith(@"SoundboardSound", named, @"soundUrl"), soundKeys),
              R"("Bell" "8001" <https://s.example/> 0 nil)");
    EXPECT_EQ(unarchivedWith(@"PostThumbnail", R"({"url": "https://cdn.example/"})"), nil);
    EXPECT_EQ(told(unarchivedWith(@"PostThumbnail", "{}", @"url"), thumbnailKeys),
              "<https://s.example/> 0 0");
    EXPECT_EQ(unarchivedWith(@"KLLoopData", R"({"count": "1", "velocity": 1})"), nil);
    EXPECT_TRUE(isNow([unarchivedWith(@"KLLoopData", R"({"count": 1, "velocity": 1,
                                                         "created": "today"})") created]));
}

TEST(ArchivesTest, SomeValuesMustBeThere) {
    EXPECT_EQ(unarchivedWith(@"SoundboardSound", R"({"name": "Bell"})", @"soundUrl"), nil);
    EXPECT_EQ(unarchivedWith(@"SoundboardSound", R"({"soundId": "8001"})", @"soundUrl"), nil);
    EXPECT_EQ(unarchivedWith(@"KLLoopData", R"({"count": 1})"), nil);
    EXPECT_EQ(unarchivedWith(@"KLLoopData", R"({"velocity": 1})"), nil);
    KLLoopData *data = unarchivedWith(@"KLLoopData", R"({"count": 1, "velocity": 2.5})");
    EXPECT_EQ(told(data, "count velocity onFire"), "1 2.5 0");
    EXPECT_TRUE(isNow(data.created));
}

TEST(ArchivesTest, WhatBelongsToAnObjectComesWithIt) {
    KLVenue *venue = archivedAndBack(wholeVenue());
    EXPECT_EQ(told(venue.category, categoryKeys), R"("c1" "Coffee" <https://i.example/c32.png>)");
    NSArray *two = archivedAndBack(
        [NSArray arrayWithObjects:entity(@"1", nil, @"a"), entity(@"2", nil, @"b"), nil]);
    EXPECT_EQ(told([two objectAtIndex:0], "idString title"), R"("1" "a")");
    EXPECT_EQ(told([two objectAtIndex:1], "idString title"), R"("2" "b")");
    KLVenueCategory *category = wholeCategory();
    category.iconUrl = address(@"");
    EXPECT_EQ(told(archivedAndBack(category), categoryKeys), R"("c1" "Coffee" <>)");
    KLTag *counted = tag(@"5", @"cats");
    counted.count = 7;
    EXPECT_EQ(told(archivedAndBack(counted), tagKeys), R"("5" "#cats" "cats" 0)");
}

TEST(ArchivesTest, NamesOfTagsAreTakenAsTheyAre) {
    EXPECT_EQ(told(unarchivedWith(@"KLTag", R"({"name": "cats"})"), tagKeys),
              R"("" "cats" "cats" 0)");
}

TEST(ArchivesTest, SizesMayBeNegative) {
    const auto native = readThere<KeloAPI::PostThumbnail>(thumbnail());
    id read = readHere(std::make_shared<KeloAPI::PostThumbnail>(native->url, -3, 4));
    EXPECT_EQ(told(read, thumbnailKeys), "<https://cdn.example/a.jpg> -3 4");
}

TEST(ArchivesTest, CountsOf64BitsComeOut) {
    for (const uint64_t count : {most, most / 2 + 1, most / 2}) {
        KLLoopData *here = archivedAndBack(loops(count, 0));
        EXPECT_EQ([here.count unsignedLongLongValue], count);
        EXPECT_EQ(held<LoopData>(here).count, KeloAPI::Number::of(count));
        // The C++ library takes the number that GNUstep has written: the same bits.
        const auto there = readThere<LoopData>(loops(count, 0));
        ASSERT_TRUE(there);
        EXPECT_EQ(there->count, KeloAPI::Number::of(static_cast<int64_t>(count)));
    }
}

TEST(ArchivesTest, NegativeCountsKeepTheirBits) {
    KLLoopData *negative = loops(1, -1);
    negative.count = [NSNumber numberWithInt:-5];
    KLLoopData *read = archivedAndBack(negative);
    EXPECT_EQ([read.count unsignedLongLongValue], [negative.count unsignedLongLongValue]);
    EXPECT_EQ(told(read.velocity), "-1");
    EXPECT_EQ(readThere<LoopData>(negative)->count, KeloAPI::Number::of(-5));
}

TEST(ArchivesTest, InstantsComeOutAsTheyWere) {
    KLLoopData *data = loops(1, 0);
    data.created = [NSDate dateWithTimeIntervalSinceReferenceDate:455000000.1];
    KLLoopData *read = archivedAndBack(data);
    EXPECT_TRUE(same(data.created, [NSDate dateWithTimeIntervalSinceReferenceDate:455000000.1]));
    EXPECT_TRUE(same(read.created, data.created));
}

TEST(ArchivesTest, RangesThatAreNoneAreEmpty) {
    const auto rangeOf = [](const Archived::Encode &encode) {
        return told(readOf("KLEntity", encode), "range");
    };
    EXPECT_EQ(rangeOf([](auto &coder) { coder.encodeText("{1, 2}", "range"); }), "{0, 0}");
    const std::pair<KeloAPI::Range, const char *> ranges[] = {
        {{-1, 2}, "{0, 0}"}, {{2, INT64_MAX}, "{0, 0}"}, {{1, 2}, "{1, 2}"}};
    for (const auto &one : ranges) {
        EXPECT_EQ(rangeOf([&](auto &coder) { coder.encodeRange(one.first, "range"); }), one.second);
    }
}

TEST(ArchivesTest, RangesLeaveTheCoderAsItWas) {
    NSData *archive = [NSKeyedArchiver archivedDataWithRootObject:entity(@"1", nil, @"a")];
    NSKeyedUnarchiver *coder =
        [[[NSKeyedUnarchiver alloc] initForReadingWithData:archive] autorelease];
    [coder setClass:[NSNull class] forClassName:@"NSValue"];
    EXPECT_EQ(told([coder decodeObjectForKey:@"root"], "idString range"), R"("1" {3, 4})");
    EXPECT_EQ([coder classForClassName:@"NSValue"], [NSNull class]);
}

TEST(ArchivesTest, RangesLeaveTheCoderAsItWasAlsoWhereReadingRaises) {
    NSDictionary *members = [NSDictionary dictionaryWithObject:[[Unreadable new] autorelease]
                                                        forKey:@"range"];
    NSKeyedUnarchiver *coder = [[[NSKeyedUnarchiver alloc]
        initForReadingWithData:KeloArchiveOf(@"KLEntity", members)] autorelease];
    NSException *exception = raised([&] { [coder decodeObjectForKey:@"root"]; });
    EXPECT_TRUE(same([exception name], NSRangeException));
    EXPECT_EQ([coder classForClassName:@"NSValue"], Nil);
}
