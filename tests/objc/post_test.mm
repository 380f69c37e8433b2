#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLPostSource.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <limits>

using namespace KeloObjcTest;
using Thumbnail = KeloAPI::PostThumbnail;

namespace {

NSURL *address(NSString *text) {
    return [NSURL URLWithString:text];
}

PostThumbnail *thumbnail() {
    return [[[PostThumbnail alloc] initWithUrl:address(@"https://cdn.example/a.jpg")
                                         width:640
                                        height:std::numeric_limits<int64_t>::max()] autorelease];
}

KLPostSource *source(const char *text) {
    return [[[KLPostSource alloc] initWithJSON:json(text)] autorelease];
}

} // namespace

TEST(PostThumbnailTest, HoldsItsValues) {
    EXPECT_TRUE(same(thumbnail().url, address(@"https://cdn.example/a.jpg")));
    EXPECT_EQ(thumbnail().width, 640);
    EXPECT_EQ(thumbnail().height, std::numeric_limits<int64_t>::max());
    PostThumbnail *unmade = [PostThumbnail alloc]; // raising, it lets itself go
    NSException *exception = raised([&] { [unmade initWithUrl:nil width:1 height:1]; });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
}

TEST(PostThumbnailTest, IsArchived) {
    PostThumbnail *read = archivedAndBack(thumbnail());
    EXPECT_TRUE([read isMemberOfClass:[PostThumbnail class]]);
    EXPECT_TRUE(same(read.url, thumbnail().url));
    EXPECT_EQ(read.width, 640);
    EXPECT_EQ(read.height, std::numeric_limits<int64_t>::max());
    EXPECT_TRUE(same(KeloEncodedKeys(thumbnail()),
                     @"object url, integer width 640, integer height 9223372036854775807"));
}

TEST(PostThumbnailTest, ArchivesCrossTheLanguages) {
    const auto native = readThere<Thumbnail>(thumbnail());
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->url().absoluteString(), "https://cdn.example/a.jpg");
    EXPECT_EQ(native->width(), 640);
    EXPECT_EQ(native->height(), std::numeric_limits<int64_t>::max());
    PostThumbnail *read = readHere(std::make_shared<Thumbnail>(native->url(), -3, 4));
    EXPECT_TRUE(same(read.url, thumbnail().url));
    EXPECT_EQ(read.width, -3);
    EXPECT_EQ(read.height, 4);
}

TEST(PostThumbnailTest, ReadsIncompleteArchives) {
    EXPECT_EQ(readOf("PostThumbnail"), nil);
    EXPECT_EQ(readOf("PostThumbnail",
                     [](auto &coder) { coder.encodeText("https://cdn.example/", "url"); }),
              nil);
    PostThumbnail *read = readOf("PostThumbnail", [](auto &coder) {
        coder.encodeURL(KeloAPI::URL::parse("https://cdn.example/"), "url");
    });
    EXPECT_TRUE(same(read.url, address(@"https://cdn.example/")));
    EXPECT_EQ(read.width, 0);
    EXPECT_EQ(read.height, 0);
}

TEST(KLPostSourceTest, ReadsJson) {
    KLPostSource *read = source(
        R"({"postId": 12, "userId": 34, "username": "mia", "description": "D",
            "contentType": 3, "thumbnailUrl": "https://t.example/t", "avatarUrl": "a b"})");
    EXPECT_TRUE(same(read.postId, @"12"));
    EXPECT_TRUE(same(read.userId, @"34"));
    EXPECT_TRUE(same(read.username, @"mia"));
    EXPECT_TRUE(same(read.caption, @"D"));
    EXPECT_TRUE(same(read.thumbnailUrl, address(@"https://t.example/t")));
    EXPECT_EQ(read.avatarUrl, nil);
    EXPECT_EQ(read.contentType, KLPostSourceContentTypeSoundboardAudio);
    read.avatarUrl = address(@"https://a.example/");
    read.thumbnailUrl = nil;
    EXPECT_TRUE(same(read.avatarUrl, address(@"https://a.example/")));
    EXPECT_EQ(read.thumbnailUrl, nil);
}

TEST(KLPostSourceTest, NeedsItsNumbers) {
    EXPECT_EQ(source(R"({"postId": "12", "userId": 3})"), nil);
    EXPECT_EQ(source(R"({"postId": 12})"), nil);
    KLPostSource *least = source(R"({"postId": 12, "userId": 3, "contentType": 7})");
    EXPECT_EQ(least.username, nil);
    EXPECT_EQ(least.caption, nil);
    EXPECT_EQ(least.contentType, KLPostSourceContentTypeUnknown);
}

TEST(KLPostSourceTest, TakesWhatJsonCannotTell) {
    EXPECT_EQ([[[KLPostSource alloc] initWithJSON:nil] autorelease], nil);
    NSNumber *one = [NSNumber numberWithInt:1];
    NSDictionary *json = [NSDictionary
        dictionaryWithObjectsAndKeys:one, @"postId", one, @"userId", [NSDate date], @"username",
                                     [NSURL URLWithString:@"http://h/"], @"avatarUrl", nil];
    KLPostSource *read = [[[KLPostSource alloc] initWithJSON:json] autorelease];
    EXPECT_TRUE(same(read.postId, @"1"));
    EXPECT_EQ(read.username, nil);
    EXPECT_EQ(read.avatarUrl, nil);
    NSDictionary *infinite = [NSDictionary
        dictionaryWithObjectsAndKeys:one, @"postId", [NSNumber numberWithDouble:INFINITY],
                                     @"userId", nil];
    EXPECT_EQ([[[KLPostSource alloc] initWithJSON:infinite] autorelease], nil);
}

TEST(KLPostSourceTest, KeepsEmptyAddresses) {
    KLPostSource *read = source(R"({"postId": 12, "userId": 34})");
    read.avatarUrl = address(@"");
    read.thumbnailUrl = address(@"");
    EXPECT_NE(read.avatarUrl, nil);
    EXPECT_NE(read.thumbnailUrl, nil);
    EXPECT_EQ([[read.avatarUrl absoluteString] length], 0U);
}

TEST(KLPostSourceTest, KeepsEveryDigit) {
    NSDictionary *json = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithLongLong:1234567890123456789], @"postId",
                                     [NSNumber numberWithUnsignedLongLong:18446744073709551615U],
                                     @"userId", nil];
    KLPostSource *read = [[[KLPostSource alloc] initWithJSON:json] autorelease];
    EXPECT_TRUE(same(read.postId, @"1234567890123456789"));
    EXPECT_TRUE(same(read.userId, @"18446744073709551615"));
}

TEST(KLPostSourceTest, ContentTypesAreTheWires) {
    const auto type = [](const char *text) { return source(text).contentType; };
    EXPECT_EQ(type(R"({"postId": 1, "userId": 3, "contentType": 1})"),
              KLPostSourceContentTypeAudio);
    EXPECT_EQ(type(R"({"postId": 1, "userId": 3, "contentType": 2})"),
              KLPostSourceContentTypeVideo);
}

using PostDeathTest = testing::Test;

TEST(PostDeathTest, InitialisersThatAreNotOffered) {
    EXPECT_DEATH([[PostThumbnail alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI\\.PostThumbnail\n$");
    EXPECT_DEATH([[KLPostSource alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI\\.KLPostSource\n$");
}
