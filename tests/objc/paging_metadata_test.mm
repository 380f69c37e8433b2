#include "objc/ObjcTest.hpp"

using namespace KeloObjcTest;

TEST(KLPagingMetadataTest, ReadsJson) {
    KLPagingMetadata *metadata = [[[KLPagingMetadata alloc]
        initWithJson:json(R"({"count": 70, "nextPage": 3, "previousPage": 1, "size": 20,
                              "anchor": 12, "backAnchor": "b", "title": "T", "nextAfter": 9,
                              "displayCount": 71})")] autorelease];
    EXPECT_EQ(metadata.count, 70);
    EXPECT_EQ(metadata.nextPage, 3);
    EXPECT_EQ(metadata.previousPage, 1);
    EXPECT_EQ(metadata.pageSize, 20);
    EXPECT_TRUE(same(metadata.anchor, @"12"));
    EXPECT_TRUE(same(metadata.backAnchor, @"b"));
    EXPECT_TRUE(same(metadata.title, @"T"));
    EXPECT_EQ(metadata.nextAfter, 9);
    EXPECT_EQ(metadata.displayCount, 71);
}

TEST(KLPagingMetadataTest, MissingValues) {
    KLPagingMetadata *metadata =
        [[[KLPagingMetadata alloc] initWithJson:[NSDictionary dictionary]] autorelease];
    EXPECT_EQ(metadata.count, 0);
    EXPECT_EQ(metadata.nextPage, 0);
    EXPECT_EQ(metadata.anchor, nil);
    metadata.count = -4;
    EXPECT_EQ(metadata.count, 0);
    metadata.displayCount = 5;
    EXPECT_EQ(metadata.displayCount, 5);
}

TEST(KLPagingMetadataTest, NeverFails) {
    KLPagingMetadata *none = [[[KLPagingMetadata alloc] initWithJson:nil] autorelease];
    EXPECT_EQ(none.count, 0);
    EXPECT_EQ(none.title, nil);
    NSDictionary *mixed = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSDate date], @"title", [NSNumber numberWithInt:7], @"count",
                                     @"no key", [NSNumber numberWithInt:1],
                                     [NSNumber numberWithDouble:INFINITY], @"nextPage", nil];
    KLPagingMetadata *metadata = [[[KLPagingMetadata alloc] initWithJson:mixed] autorelease];
    EXPECT_EQ(metadata.count, 7);
    EXPECT_EQ(metadata.title, nil);
    EXPECT_EQ(metadata.nextPage, 0);
}

TEST(KLPagingMetadataTest, CopiesAndJoins) {
    KLPagingMetadata *one = [[[KLPagingMetadata alloc]
        initWithJson:json(R"({"count": 7, "nextPage": 3, "previousPage": 1, "title": "one"})")]
        autorelease];
    KLPagingMetadata *two = [[[KLPagingMetadata alloc]
        initWithJson:json(R"({"previousPage": 8, "backAnchor": "b"})")] autorelease];
    KLPagingMetadata *copied = [[[KLPagingMetadata alloc] initWithMetadata:one] autorelease];
    EXPECT_NE(copied, one);
    EXPECT_EQ(copied.count, 7);
    EXPECT_TRUE(same(copied.title, @"one"));
    KLPagingMetadata *joined = [[[KLPagingMetadata alloc] initWithCount:30 metadata:one
                                                                prepend:two] autorelease];
    EXPECT_EQ(joined.count, 30);
    EXPECT_EQ(joined.nextPage, 3);
    EXPECT_EQ(joined.previousPage, 8);
    EXPECT_TRUE(same(joined.backAnchor, @"b"));
    EXPECT_TRUE(same(joined.title, @"one"));
}

TEST(KLPagingMetadataTest, ReadsItsChannel) {
    KLPagingMetadata *metadata = [[[KLPagingMetadata alloc]
        initWithJson:json(R"({"channel": {"channelId": 12, "channel": "Cats"}})")] autorelease];
    KLChannel *channel = metadata.channel;
    EXPECT_TRUE(same(channel.channelId, @"12"));
    EXPECT_TRUE(same(channel.name, @"Cats"));
    EXPECT_EQ(metadata.channel, channel);
    KLPagingMetadata *copied = [[[KLPagingMetadata alloc] initWithMetadata:metadata] autorelease];
    EXPECT_EQ(copied.channel, channel);
    KLPagingMetadata *unreadable = [[[KLPagingMetadata alloc]
        initWithJson:json(R"({"channel": {"channelId": 12}, "count": 3})")] autorelease];
    EXPECT_EQ(unreadable.channel, nil);
    EXPECT_EQ(unreadable.count, 3);
}
