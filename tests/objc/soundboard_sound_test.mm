#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;
using Sound = KeloAPI::SoundboardSound;

namespace {

SoundboardSound *sound(NSString *url, BOOL featured, NSString *sourcePostId) {
    return [[[SoundboardSound alloc] initWithName:@"Bell"
                                          soundId:@"8001"
                                         soundUrl:url
                                         featured:featured
                                     sourcePostId:sourcePostId] autorelease];
}

SoundboardSound *whole() {
    return sound(@"https://s.example/b.m4a", YES, @"12");
}

void expectWhole(SoundboardSound *sound) {
    ASSERT_TRUE([sound isMemberOfClass:[SoundboardSound class]]);
    EXPECT_TRUE(same(sound.name, @"Bell"));
    EXPECT_TRUE(same(sound.soundId, @"8001"));
    EXPECT_TRUE(same(sound.soundUrl, [NSURL URLWithString:@"https://s.example/b.m4a"]));
    EXPECT_TRUE(sound.featured);
    EXPECT_TRUE(same(sound.sourcePostId, @"12"));
}

/// An archive with a name, an identifier and an address, but for one of them.
SoundboardSound *unarchivedWithout(NSString *key) {
    NSMutableDictionary *members = [NSMutableDictionary
        dictionaryWithObjectsAndKeys:@"Bell", @"name", @"8001", @"soundId",
                                     [NSURL URLWithString:@"https://s.example/"], @"soundUrl", nil];
    [members removeObjectForKey:key];
    return unarchived(KeloArchiveOf(@"SoundboardSound", members));
}

} // namespace

TEST(SoundboardSoundTest, KeepsWhatItIsMadeOf) {
    expectWhole(whole());
    EXPECT_FALSE(sound(@"", NO, nil).featured);
    EXPECT_EQ(sound(@"", NO, nil).sourcePostId, nil);
}

TEST(SoundboardSoundTest, WhatIsNoURLIsAnEmptyOne) {
    NSString *const none[] = {@"", nil, @"not a URL"};
    for (NSString *url : none) {
        NSURL *address = sound(url, YES, nil).soundUrl;
        EXPECT_NE(address, nil);
        EXPECT_EQ([[address absoluteString] length], 0U);
    }
}

TEST(SoundboardSoundTest, AddressesWithoutAPath) {
    NSURL *address = sound(@"https://cdn.example.com?id=5", YES, nil).soundUrl;
    EXPECT_TRUE(same([address absoluteString], @"https://cdn.example.com/?id=5"));
}

TEST(SoundboardSoundTest, EncodesEveryPropertyInOrder) {
    EXPECT_TRUE(same(KeloEncodedLines(whole()), @"object soundUrl https://s.example/b.m4a\n"
                                                 "object name Bell\n"
                                                 "object sourcePostId 12\n"
                                                 "object soundId 8001\n"
                                                 "bool featured 1\n"));
}

TEST(SoundboardSoundTest, ComesOutOfItsArchive) {
    expectWhole(archivedAndBack(whole()));
    SoundboardSound *bare = archivedAndBack(sound(@"", NO, nil));
    EXPECT_TRUE(same(bare.name, @"Bell"));
    EXPECT_NE(bare.soundUrl, nil);
    EXPECT_EQ([[bare.soundUrl absoluteString] length], 0U);
    EXPECT_FALSE(bare.featured);
    EXPECT_EQ(bare.sourcePostId, nil);
}

TEST(SoundboardSoundTest, BothLanguagesReadEachOthersArchives) {
    expectWhole(readHere(std::dynamic_pointer_cast<Sound>(shared(whole()))));
    const auto there = readThere<Sound>(whole());
    ASSERT_TRUE(there);
    expectWhole(wrap(there));
    SoundboardSound *bare = sound(@"", NO, nil);
    const auto bareThere = readThere<Sound>(bare);
    ASSERT_TRUE(bareThere);
    EXPECT_EQ(bareThere->soundUrl(), KeloAPI::URL::empty());
    SoundboardSound *bareHere = readHere(bareThere);
    EXPECT_TRUE(same(bareHere.soundId, @"8001"));
    EXPECT_EQ([[bareHere.soundUrl absoluteString] length], 0U);
}

TEST(SoundboardSoundTest, AnArchiveNeedsThreeValues) {
    SoundboardSound *bare = unarchivedWithout(@"none");
    EXPECT_TRUE(same(bare.name, @"Bell"));
    EXPECT_FALSE(bare.featured);
    EXPECT_EQ(bare.sourcePostId, nil);
    EXPECT_EQ(unarchivedWithout(@"name"), nil);
    EXPECT_EQ(unarchivedWithout(@"soundId"), nil);
    EXPECT_EQ(unarchivedWithout(@"soundUrl"), nil);
}

TEST(SoundboardSoundTest, WhatIsOfAnotherKindInAnArchiveIsMissing) {
    NSURL *address = [NSURL URLWithString:@"https://s.example/"];
    EXPECT_EQ(unarchived(KeloArchiveOf(
                  @"SoundboardSound",
                  [NSDictionary dictionaryWithObjectsAndKeys:@"Bell", @"name", address, @"soundId",
                                                             address, @"soundUrl", nil])),
              nil);
    EXPECT_EQ(
        unarchived(KeloArchiveOf(
            @"SoundboardSound",
            [NSDictionary dictionaryWithObjectsAndKeys:@"Bell", @"name", @"8001", @"soundId",
                                                       @"https://s.example/", @"soundUrl", nil])),
        nil);
    SoundboardSound *sound = unarchived(KeloArchiveOf(
        @"SoundboardSound",
        [NSDictionary dictionaryWithObjectsAndKeys:@"Bell", @"name", @"8001", @"soundId", address,
                                                   @"soundUrl", address, @"sourcePostId", nil]));
    EXPECT_TRUE(same(sound.soundId, @"8001"));
    EXPECT_EQ(sound.sourcePostId, nil);
}

TEST(SoundboardSoundDeathTest, NeedsItsValues) {
    EXPECT_DEATH([[SoundboardSound alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.SoundboardSound\n");
}
