#include "objc/HostCode.h"
#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLEntity.hpp>

using namespace KeloObjcTest;
using Entity = KeloAPI::KLEntity;

namespace {

KLEntity *entity(NSString *identifier, NSString *type, NSString *title) {
    return [[[KLEntity alloc] initWithIdString:identifier
                                          type:type
                                         title:title
                                          link:@" | kelo://a | b"
                                         range:NSMakeRange(3, 4)] autorelease];
}

void expectSame(KLEntity *read, KLEntity *expected) {
    EXPECT_TRUE([read isMemberOfClass:[KLEntity class]]);
    EXPECT_TRUE(same(read.idString, expected.idString));
    EXPECT_TRUE(same(read.type, expected.type));
    EXPECT_TRUE(same(read.title, expected.title));
    EXPECT_TRUE(same(read.link, expected.link));
    EXPECT_TRUE(NSEqualRanges(read.range, expected.range));
}

} // namespace

TEST(KLEntityTest, HoldsItsValues) {
    KLEntity *mention = entity(@"9", @"mention", @"Mia");
    EXPECT_TRUE(same(mention.idString, @"9"));
    EXPECT_TRUE(same(mention.type, @"mention"));
    EXPECT_TRUE(same(mention.title, @"Mia"));
    EXPECT_TRUE(same(mention.link, @" | kelo://a | b"));
    EXPECT_TRUE(same(mention.applicationLink, @"kelo://a | b"));
    EXPECT_TRUE(same(NSStringFromRange(mention.range), @"{location=3, length=4}"));
    mention.range = NSMakeRange(NSNotFound, 0);
    EXPECT_TRUE(NSEqualRanges(mention.range, NSMakeRange(NSNotFound, 0)));
    KLEntity *least = entity(nil, nil, nil);
    EXPECT_EQ(least.idString, nil);
    EXPECT_EQ(least.type, nil);
    EXPECT_TRUE(same(least.title, @""));
}

TEST(KLEntityTest, EqualsByIdentifierTypeAndTitle) {
    KLEntity *one = entity(@"9", @"mention", @"Mia");
    KLEntity *other = entity(@"9", @"mention", @"Mia");
    other.range = NSMakeRange(0, 1);
    EXPECT_TRUE([one isEqual:other]);
    EXPECT_EQ([one hash], [other hash]);
    EXPECT_TRUE([entity(nil, nil, @"x") isEqual:entity(nil, nil, @"x")]);
    EXPECT_FALSE([one isEqual:entity(nil, @"mention", @"Mia")]);
    EXPECT_FALSE([one isEqual:entity(@"9", @"tag", @"Mia")]);
    EXPECT_FALSE([one isEqual:entity(@"9", @"mention", @"Ben")]);
    EXPECT_FALSE([one isEqual:@"Mia"]);
    EXPECT_FALSE([one isEqual:nil]);
}

TEST(KLEntityTest, IsArchived) {
    expectSame(archivedAndBack(entity(@"9", @"mention", @"Mia")), entity(@"9", @"mention", @"Mia"));
    expectSame(archivedAndBack(entity(nil, nil, nil)), entity(nil, nil, nil));
    NSArray *two = archivedAndBack(
        [NSArray arrayWithObjects:entity(@"1", nil, @"a"), entity(@"2", nil, @"b"), nil]);
    expectSame([two objectAtIndex:0], entity(@"1", nil, @"a"));
    expectSame([two objectAtIndex:1], entity(@"2", nil, @"b"));
    EXPECT_TRUE(same(KeloEncodedKeys(entity(@"1", nil, @"a")),
                     @"object idString, object type, object title, object link, value range"));
}

TEST(KLEntityTest, ArchivesCrossTheLanguages) {
    const auto native = readThere<Entity>(entity(@"9", @"mention", @"Mia"));
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->idString(), "9");
    EXPECT_EQ(native->link(), " | kelo://a | b");
    EXPECT_EQ(native->range, (KeloAPI::Range{3, 4}));
    expectSame(readHere(native), entity(@"9", @"mention", @"Mia"));
}

TEST(KLEntityTest, ReadsIncompleteArchives) {
    KLEntity *read = readOf("KLEntity");
    EXPECT_EQ(read.idString, nil);
    EXPECT_EQ(read.type, nil);
    EXPECT_TRUE(same(read.title, @""));
    EXPECT_TRUE(same(read.link, @""));
    EXPECT_TRUE(same(read.applicationLink, @""));
    EXPECT_TRUE(NSEqualRanges(read.range, NSMakeRange(0, 0)));
}

TEST(KLEntityTest, ReadsNoOtherRanges) {
    const auto rangeOf = [](const Archived::Encode &encode) {
        return static_cast<KLEntity *>(readOf("KLEntity", encode)).range;
    };
    const NSRange none = NSMakeRange(0, 0);
    EXPECT_TRUE(
        NSEqualRanges(rangeOf([](auto &coder) { coder.encodeText("{1, 2}", "range"); }), none));
    EXPECT_TRUE(NSEqualRanges(rangeOf([](auto &coder) {
                                  coder.encodeRange(KeloAPI::Range{-1, 2}, "range");
                              }),
                              none));
    EXPECT_TRUE(NSEqualRanges(rangeOf([](auto &coder) {
                                  coder.encodeRange(KeloAPI::Range{2, INT64_MAX}, "range");
                              }),
                              none));
    EXPECT_TRUE(NSEqualRanges(rangeOf([](auto &coder) {
                                  coder.encodeRange(KeloAPI::Range{1, 2}, "range");
                              }),
                              NSMakeRange(1, 2)));
}

TEST(KLEntityTest, LeavesTheCoderAsItWas) {
    NSData *archive = [NSKeyedArchiver archivedDataWithRootObject:entity(@"1", nil, @"a")];
    NSKeyedUnarchiver *coder =
        [[[NSKeyedUnarchiver alloc] initForReadingWithData:archive] autorelease];
    [coder setClass:[NSNull class] forClassName:@"NSValue"];
    expectSame([coder decodeObjectForKey:@"root"], entity(@"1", nil, @"a"));
    EXPECT_EQ([coder classForClassName:@"NSValue"], [NSNull class]);
}

TEST(KLEntityTest, LeavesTheCoderAsItWasAlsoWhereReadingRaises) {
    NSDictionary *members = [NSDictionary dictionaryWithObject:[[Unreadable new] autorelease]
                                                        forKey:@"range"];
    NSKeyedUnarchiver *coder = [[[NSKeyedUnarchiver alloc]
        initForReadingWithData:KeloArchiveOf(@"KLEntity", members)] autorelease];
    NSException *exception = raised([&] { [coder decodeObjectForKey:@"root"]; });
    EXPECT_TRUE(same([exception name], NSRangeException));
    EXPECT_EQ([coder classForClassName:@"NSValue"], Nil);
}

using KLEntityDeathTest = testing::Test;

TEST(KLEntityDeathTest, IsMadeOfSomething) {
    EXPECT_DEATH([[KLEntity alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI\\.KLEntity\n$");
}
