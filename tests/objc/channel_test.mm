#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloObjcTest;
using Channel = KeloAPI::KLChannel;

namespace {

NSURL *address(NSString *text) {
    return [NSURL URLWithString:text];
}

KLChannel *channel(NSString *identifier, NSString *name) {
    return [[[KLChannel alloc] initWithChannelId:identifier
                                            name:name
                                    fontColorHex:@"ffffff"
                              backgroundColorHex:@"123456"] autorelease];
}

KLChannel *fullChannel() {
    KLChannel *full = channel(@"12", @"Cats");
    full.iconUrl = address(@"https://i.example/1");
    full.iconRetinaUrl = address(@"https://i.example/2");
    full.exploreIconRetinaUrl = address(@"https://i.example/3");
    full.following = YES;
    full.created = [NSDate dateWithTimeIntervalSince1970:1433146150.5];
    full.channelDescription = @"All about cats";
    full.vanityPathSuffix = @"cats";
    full.timelineData = [[[KLPagedData alloc] init] autorelease];
    full.showRecent = YES;
    return full;
}

void expectArchived(KLChannel *read) {
    EXPECT_TRUE([read isMemberOfClass:[KLChannel class]]);
    EXPECT_TRUE(same(read.channelId, @"12"));
    EXPECT_TRUE(same(read.name, @"Cats"));
    EXPECT_TRUE(same(read.fontColorHex, @"ffffff"));
    EXPECT_TRUE(same(read.backgroundColorHex, @"123456"));
    EXPECT_TRUE(same(read.iconUrl, address(@"https://i.example/1")));
    EXPECT_TRUE(same(read.iconRetinaUrl, address(@"https://i.example/2")));
    EXPECT_NEAR([read.created timeIntervalSince1970], 1433146150.5, 1e-6);
    EXPECT_TRUE(same(read.channelDescription, @"All about cats"));
    EXPECT_EQ(read.exploreIconRetinaUrl, nil);
    EXPECT_FALSE(read.following);
    EXPECT_EQ(read.vanityPathSuffix, nil);
    EXPECT_EQ(read.timelineData, nil);
    EXPECT_FALSE(read.showRecent);
}

} // namespace

TEST(KLChannelTest, IsEmptyAtFirst) {
    KLChannel *empty = [[[KLChannel alloc] init] autorelease];
    EXPECT_TRUE(same(empty.channelId, @""));
    EXPECT_TRUE(same(empty.name, @""));
    EXPECT_TRUE(same(empty.fontColorHex, @"000000"));
    EXPECT_TRUE(same(empty.backgroundColorHex, @"000000"));
    EXPECT_EQ(empty.iconUrl, nil);
    EXPECT_EQ(empty.iconRetinaUrl, nil);
    EXPECT_EQ(empty.created, nil);
    EXPECT_EQ(empty.channelDescription, nil);
    EXPECT_FALSE(empty.following);
    EXPECT_FALSE(empty.showRecent);
}

TEST(KLChannelTest, HoldsItsValues) {
    KLChannel *full = fullChannel();
    EXPECT_TRUE(same(full.channelId, @"12"));
    EXPECT_TRUE(same(full.name, @"Cats"));
    EXPECT_TRUE(same(full.fontColorHex, @"ffffff"));
    EXPECT_TRUE(same(full.backgroundColorHex, @"123456"));
    EXPECT_TRUE(same(full.iconUrl, address(@"https://i.example/1")));
    EXPECT_TRUE(same(full.iconRetinaUrl, address(@"https://i.example/2")));
    EXPECT_TRUE(same(full.exploreIconRetinaUrl, address(@"https://i.example/3")));
    EXPECT_TRUE(full.following);
    EXPECT_EQ([full.created timeIntervalSince1970], 1433146150.5);
    EXPECT_TRUE(same(full.channelDescription, @"All about cats"));
    EXPECT_TRUE(same(full.vanityPathSuffix, @"cats"));
    EXPECT_EQ(full.timelineData.count, 0);
    EXPECT_NE(full.timelineData, nil);
    EXPECT_TRUE(full.showRecent);
}

TEST(KLChannelTest, ChangesItsValues) {
    KLChannel *full = fullChannel();
    full.channelId = @"13";
    full.name = @"Dogs";
    full.fontColorHex = @"1";
    full.backgroundColorHex = @"2";
    full.iconUrl = nil;
    full.created = nil;
    full.timelineData = nil;
    full.channelDescription = nil;
    EXPECT_TRUE(same(full.channelId, @"13"));
    EXPECT_TRUE(same(full.name, @"Dogs"));
    EXPECT_TRUE(same(full.fontColorHex, @"1"));
    EXPECT_TRUE(same(full.backgroundColorHex, @"2"));
    EXPECT_EQ(full.iconUrl, nil);
    EXPECT_EQ(full.created, nil);
    EXPECT_EQ(full.timelineData, nil);
    EXPECT_EQ(full.channelDescription, nil);
}

TEST(KLChannelTest, EqualsByIdentifier) {
    KLChannel *one = channel(@"12", @"Cats");
    KLChannel *sameIdentifier = channel(@"12", @"Dogs");
    EXPECT_TRUE([one isEqual:sameIdentifier]);
    EXPECT_EQ([one hash], [sameIdentifier hash]);
    EXPECT_FALSE([one isEqual:channel(@"13", @"Cats")]);
    EXPECT_FALSE([one isEqual:@"12"]);
    EXPECT_FALSE([one isEqual:nil]);
    NSSet *set = [NSSet setWithObjects:one, sameIdentifier, channel(@"13", @"Cats"), nil];
    EXPECT_EQ([set count], 2U);
}

TEST(KLChannelTest, IsArchived) {
    expectArchived(archivedAndBack(fullChannel()));
    EXPECT_TRUE(same(KeloEncodedKeys(fullChannel()),
                     @"object channelId, object name, object created, object iconUrl, "
                     @"object iconRetinaUrl, object fontColorHex, object backgroundColorHex, "
                     @"object channelDescription"));
}

TEST(KLChannelTest, ArchivesCrossTheLanguages) {
    const auto native = readThere<Channel>(fullChannel());
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->channelId, "12");
    EXPECT_EQ(native->name, "Cats");
    EXPECT_FALSE(native->following);
    expectArchived(readHere(native));
    expectArchived(readHere(KeloBridge::shared<Channel>(fullChannel())));
}

TEST(KLChannelTest, KeepsEmptyAddresses) {
    KLChannel *cats = channel(@"12", @"Cats");
    cats.iconUrl = address(@"");
    cats.iconRetinaUrl = address(@"");
    cats.exploreIconRetinaUrl = address(@"");
    NSURL *const kept[] = {cats.iconUrl, cats.iconRetinaUrl, cats.exploreIconRetinaUrl};
    for (NSURL *one : kept) {
        EXPECT_NE(one, nil);
        EXPECT_EQ([[one absoluteString] length], 0U);
    }
}

TEST(KLChannelTest, ReadsIncompleteArchives) {
    KLChannel *read = readOf("KLChannel");
    EXPECT_TRUE(same(read.channelId, @""));
    EXPECT_TRUE(same(read.name, @""));
    EXPECT_TRUE(same(read.fontColorHex, @"000000"));
    EXPECT_TRUE(same(read.backgroundColorHex, @"000000"));
    EXPECT_EQ(read.created, nil);
    EXPECT_EQ(read.iconUrl, nil);
    EXPECT_EQ(read.channelDescription, nil);
}
