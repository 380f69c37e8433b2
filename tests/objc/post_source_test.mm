#include "objc/ObjcTest.hpp"

#include <cmath>

using namespace KeloObjcTest;

namespace {

NSURL *address(NSString *text) {
    return [NSURL URLWithString:text];
}

KLPostSource *source(const char *text) {
    return [[[KLPostSource alloc] initWithJSON:json(text)] autorelease];
}

} // namespace

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
