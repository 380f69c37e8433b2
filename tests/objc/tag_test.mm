#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLTag.hpp>

using namespace KeloObjcTest;
using Tag = KeloAPI::KLTag;

namespace {

KLTag *tag(NSString *identifier, NSString *name) {
    return [[[KLTag alloc] initWithTagId:identifier name:name] autorelease];
}

} // namespace

TEST(KLTagTest, StoresItsNameWithAHash) {
    KLTag *cats = tag(@"5", @"cats");
    EXPECT_TRUE(same(cats.tagId, @"5"));
    EXPECT_TRUE(same(cats.name, @"#cats"));
    EXPECT_TRUE(same(cats.nameWithoutHash, @"cats"));
    EXPECT_EQ(cats.count, 0);
    cats.count = 7;
    EXPECT_EQ(cats.count, 7);
    EXPECT_TRUE(same(tag(@"5", @"##a").name, @"##a"));
    EXPECT_TRUE(same(tag(@"5", @"##a").nameWithoutHash, @"#a"));
    EXPECT_TRUE(same(tag(nil, nil).name, @"#"));
}

TEST(KLTagTest, NeedsNoIdentifier) {
    KLTag *cats = [[[KLTag alloc] initWithName:@"cats"] autorelease];
    EXPECT_TRUE(same(cats.tagId, @""));
    EXPECT_TRUE(same(cats.name, @"#cats"));
}

TEST(KLTagTest, IsArchivedWithoutItsCount) {
    KLTag *cats = tag(@"5", @"cats");
    cats.count = 7;
    KLTag *read = archivedAndBack(cats);
    EXPECT_TRUE([read isMemberOfClass:[KLTag class]]);
    EXPECT_TRUE(same(read.tagId, @"5"));
    EXPECT_TRUE(same(read.name, @"#cats"));
    EXPECT_EQ(read.count, 0);
    EXPECT_TRUE(same(KeloEncodedKeys(cats), @"object tagId, object name"));
}

TEST(KLTagTest, ArchivesCrossTheLanguages) {
    const auto native = readThere<Tag>(tag(@"5", @"caf\u00e9"));
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->tagId(), "5");
    EXPECT_EQ(native->name(), "#caf\u00e9");
    KLTag *read = readHere(native);
    EXPECT_TRUE(same(read.tagId, @"5"));
    EXPECT_TRUE(same(read.name, @"#caf\u00e9"));
}

TEST(KLTagTest, TakesArchivedNamesAsTheyAre) {
    KLTag *read = readOf("KLTag");
    EXPECT_TRUE(same(read.tagId, @""));
    EXPECT_TRUE(same(read.name, @""));
    EXPECT_TRUE(same(read.nameWithoutHash, @""));
    KLTag *bare = readOf("KLTag", [](auto &coder) { coder.encodeText("cats", "name"); });
    EXPECT_TRUE(same(bare.name, @"cats"));
}

using KLTagDeathTest = testing::Test;

TEST(KLTagDeathTest, IsMadeOfSomething) {
    EXPECT_DEATH([[KLTag alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI\\.KLTag\n$");
}
