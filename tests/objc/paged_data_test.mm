#include "objc/HostCode.h"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloObjcTest;

namespace {

KLPagingMetadata *metadata(const char *text) {
    return [[[KLPagingMetadata alloc] initWithJson:json(text)] autorelease];
}

/// A list of so many numbers, from `first` on.
KLPagedData *numbers(int first, int many, KLPagingMetadata *paging) {
    NSMutableArray *list = [NSMutableArray array];
    for (int i = 0; i < many; ++i) {
        [list addObject:[NSNumber numberWithInt:first + i]];
    }
    return [[[KLPagedData alloc] initWithData:list metadata:paging] autorelease];
}

KLPagedData *texts() {
    return [[[KLPagedData alloc] initWithData:[NSArray arrayWithObjects:@"a", @"b", @"c", nil]]
        autorelease];
}

NSString *joined(KLPagedData *data) {
    return [data.data componentsJoinedByString:@" "];
}

} // namespace

TEST(KLPagedDataTest, IsEmptyAtFirst) {
    KLPagedData *data = [[[KLPagedData alloc] init] autorelease];
    EXPECT_EQ(data.count, 0);
    EXPECT_EQ(data.startIndex, 0);
    EXPECT_EQ(data.endIndex, 0);
    EXPECT_EQ(data.metadata.count, 0);
    EXPECT_FALSE(data.hasNextPage);
    EXPECT_TRUE(same(data.data, [NSArray array]));
}

TEST(KLPagedDataTest, CountsWhatItIsGiven) {
    KLPagedData *data = texts();
    EXPECT_EQ(data.count, 3);
    EXPECT_EQ(data.endIndex, 3);
    EXPECT_EQ(data.metadata.count, 3);
    EXPECT_FALSE(data.hasNextPage);
    EXPECT_TRUE(same(joined(data), @"a b c"));
}

TEST(KLPagedDataTest, StoresMetadataAsGiven) {
    KLPagingMetadata *paging = metadata(R"({"count": 9, "nextPage": 2})");
    KLPagedData *data = numbers(1, 2, paging);
    EXPECT_EQ(data.metadata, paging);
    EXPECT_TRUE(data.hasNextPage);
    KLPagingMetadata *other = metadata(R"({"nextPage": 0})");
    data.metadata = other;
    EXPECT_EQ(data.metadata, other);
    EXPECT_FALSE(data.hasNextPage);
}

TEST(KLPagedDataTest, ReadsAndReplacesByIndex) {
    KLPagedData *data = texts();
    EXPECT_TRUE(same([data objectAtIndex:0], @"a"));
    EXPECT_TRUE(same([data objectAtIndexedSubscript:2], @"c"));
    NSObject *object = [[NSObject new] autorelease];
    [data setObject:object atIndexedSubscript:1];
    EXPECT_EQ([data objectAtIndexedSubscript:1], object);
    EXPECT_EQ(data.count, 3);
    EXPECT_EQ(data.metadata.count, 3);
}

TEST(KLPagedDataTest, InsertsAndCounts) {
    KLPagedData *data = [[[KLPagedData alloc] init] autorelease];
    [data append:@"b"];
    [data addObject:@"d"];
    [data insert:@"a" atIndex:0];
    [data insertObject:@"c" atIndex:2];
    [data insert:@"e" atIndex:4];
    EXPECT_TRUE(same(joined(data), @"a b c d e"));
    EXPECT_EQ(data.metadata.count, 5);
}

TEST(KLPagedDataTest, RemovesByIndex) {
    KLPagedData *data = texts();
    data.metadata = metadata(R"({"count": 1})");
    EXPECT_TRUE(same([data removeAtIndex:1], @"b"));
    EXPECT_EQ(data.metadata.count, 0);
    EXPECT_TRUE(same([data removeObjectAtIndex:1], @"c"));
    EXPECT_EQ(data.metadata.count, 0);
    EXPECT_TRUE(same(joined(data), @"a"));
}

TEST(KLPagedDataTest, RemovesByIdentity) {
    NSMutableString *one = [NSMutableString stringWithString:@"x"];
    NSMutableString *equal = [NSMutableString stringWithString:@"x"];
    KLTag *tag = [[[KLTag alloc] initWithName:@"x"] autorelease];
    KLPagedData *data = [[[KLPagedData alloc]
        initWithData:[NSArray arrayWithObjects:one, tag, one, nil]] autorelease];
    EXPECT_FALSE([data remove:equal]);
    EXPECT_FALSE([data removeObject:nil]);
    EXPECT_EQ(data.metadata.count, 3);
    EXPECT_TRUE([data remove:one]);
    EXPECT_EQ([data objectAtIndex:0], tag);
    EXPECT_TRUE([data removeObject:tag]);
    EXPECT_EQ([data objectAtIndex:0], one);
    EXPECT_EQ(data.metadata.count, 1);
}

TEST(KLPagedDataTest, AssigningItsDataLeavesTheCount) {
    KLPagedData *data = texts();
    NSMutableArray *list = [NSMutableArray arrayWithObject:@"z"];
    data.data = list;
    [list addObject:@"later"];
    EXPECT_TRUE(same(joined(data), @"z"));
    EXPECT_EQ(data.metadata.count, 3);
}

TEST(KLPagedDataTest, AppendsPages) {
    KLPagedData *data = numbers(0, 2, metadata(R"({"count": 50})"));
    KLPagedData *page = numbers(2, 1, metadata(R"({"count": 10, "nextPage": 4})"));
    [data appendPagedData:page];
    EXPECT_TRUE(same(joined(data), @"0 1 2"));
    EXPECT_EQ(data.metadata, page.metadata);
    EXPECT_EQ(data.metadata.count, 10);
    [data addPagedData:nil];
    EXPECT_EQ(data.count, 3);
    [data addPagedData:page];
    EXPECT_TRUE(same(joined(data), @"0 1 2 2"));
}

TEST(KLPagedDataTest, PrependsPages) {
    KLPagedData *data = numbers(5, 20, metadata(R"({"nextPage": 3, "previousPage": 2})"));
    KLPagedData *page = numbers(0, 5, metadata(R"({"nextPage": 8, "previousPage": 1})"));
    [data prependPagedData:page];
    EXPECT_EQ(data.count, 25);
    EXPECT_EQ(data.metadata.count, 25);
    EXPECT_EQ(data.metadata.nextPage, 3);
    EXPECT_EQ(data.metadata.previousPage, 1);
    EXPECT_EQ([[data objectAtIndex:5] intValue], 5);
}

TEST(KLPagedDataTest, ACopySharesTheElements) {
    NSObject *object = [[NSObject new] autorelease];
    KLPagedData *data =
        [[[KLPagedData alloc] initWithData:[NSArray arrayWithObject:object]] autorelease];
    KLPagedData *copied = [[data copy] autorelease];
    [copied append:@"new"];
    EXPECT_NE(copied, data);
    EXPECT_NE(copied.metadata, data.metadata);
    EXPECT_EQ(data.count, 1);
    EXPECT_EQ(data.metadata.count, 1);
    EXPECT_EQ(copied.metadata.count, 2);
    EXPECT_EQ([copied objectAtIndex:0], object);
    EXPECT_TRUE([data conformsToProtocol:@protocol(NSCopying)]);
}

TEST(KLPagedDataTest, EnumeratesInOrder) {
    EXPECT_TRUE(same(KeloEnumerated([[[KLPagedData alloc] init] autorelease]), [NSArray array]));
    // More than an enumeration gives at once.
    KLPagedData *data = numbers(0, 100, metadata("{}"));
    EXPECT_TRUE(same(KeloEnumerated(data), data.data));
    EXPECT_TRUE(same(KeloEnumeratedWhileRemoving(data), numbers(0, 100, metadata("{}")).data));
    EXPECT_EQ(data.count, 0);
}

TEST(KLPagedDataTest, ThereIsNoElementNil) {
    KLPagedData *data = texts();
    const auto name = [](NSException *exception) { return [exception name]; };
    EXPECT_TRUE(same(name(raised([&] { [data append:nil]; })), NSInvalidArgumentException));
    EXPECT_TRUE(
        same(name(raised([&] { [data insert:nil atIndex:0]; })), NSInvalidArgumentException));
    EXPECT_TRUE(same(name(raised([&] { [data setObject:nil atIndexedSubscript:0]; })),
                     NSInvalidArgumentException));
    EXPECT_TRUE(
        same(name(raised([&] { [data appendPagedData:nil]; })), NSInvalidArgumentException));
    EXPECT_TRUE(same(joined(data), @"a b c"));
    EXPECT_EQ(data.metadata.count, 3);
}

TEST(KLPagedDataTest, ItsElementsLiveAsLongAsItDoes) {
    KLPagedData *data = [[[KLPagedData alloc] init] autorelease];
    NSObject *object = [NSObject new];
    [data append:object];
    [object release];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    EXPECT_EQ([data objectAtIndex:0], object);
    EXPECT_TRUE([data remove:object]);
    [pool drain];
}

using KLPagedDataDeathTest = testing::Test;

TEST(KLPagedDataDeathTest, IndexesOutside) {
    KLPagedData *data = texts();
    const char *outside = "^KeloAPI: contract violated: index outside the paged data\n$";
    EXPECT_DEATH([data objectAtIndex:3], outside);
    EXPECT_DEATH([data objectAtIndexedSubscript:-1], outside);
    EXPECT_DEATH([data setObject:@"x" atIndexedSubscript:3], outside);
    EXPECT_DEATH([data removeAtIndex:3], outside);
    EXPECT_DEATH([data insert:@"x" atIndex:4],
                 "^KeloAPI: contract violated: index of an insertion outside the paged data\n$");
}
