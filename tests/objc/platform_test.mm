// The main queue and the diagnostics, and the values that endpoints tell beside their items.
#include "objc/Block.hpp"
#include "objc/Listener.h"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/queues/Diagnostics.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <poll.h>

#include <thread>

using namespace KeloObjcTest;
using NativeQueue = KeloAPI::MainQueue;

namespace {

/// Posts from another thread, which has no autorelease pool.
void post(const std::function<void()> &task) {
    std::thread([&task] { NativeQueue::main().async(task); }).join();
}

bool isReadable(int descriptor) {
    pollfd watched = {descriptor, POLLIN, 0};
    return poll(&watched, 1, 0) == 1;
}

} // namespace

TEST(ObjcMainQueueTest, Drains) {
    const int descriptor = [MainQueue fileDescriptor];
    EXPECT_FALSE(isReadable(descriptor));
    int count = 0;
    post([&count] { ++count; });
    post([&count] { ++count; });
    EXPECT_TRUE(isReadable(descriptor));
    EXPECT_EQ(count, 0);
    EXPECT_EQ([MainQueue drain], 2U);
    EXPECT_EQ(count, 2);
    EXPECT_EQ([MainQueue drain], 0U);
    EXPECT_FALSE(isReadable(descriptor));
}

TEST(ObjcMainQueueTest, RunsUntilItIsStopped) {
    int count = 0;
    post([&count] { ++count; });
    post([] { [MainQueue stop]; });
    post([&count] { ++count; });
    [MainQueue run];
    EXPECT_EQ(count, 1);
    EXPECT_EQ([MainQueue drain], 1U);
}

TEST(ObjcMainQueueTest, RunsUntilADate) {
    int count = 0;
    post([&count] { ++count; });
    NSDate *end = [NSDate dateWithTimeIntervalSinceNow:0.02];
    [MainQueue runUntilDate:end];
    EXPECT_EQ(count, 1);
    EXPECT_LE([end timeIntervalSinceNow], 0);
    post([] { [MainQueue stop]; });
    end = [NSDate distantFuture];
    [MainQueue runUntilDate:end];
    [MainQueue runUntilDate:[NSDate distantPast]];
}

TEST(ObjcMainQueueTest, RunsOnTheRunLoop) {
    std::vector<int> order;
    post([&order] { order.push_back(1); });
    NSRunLoop *loop = [NSRunLoop currentRunLoop];
    const auto runFor = [loop](double seconds) {
        [loop runUntilDate:[NSDate dateWithTimeIntervalSinceNow:seconds]];
    };
    [MainQueue addToRunLoop:loop forMode:NSDefaultRunLoopMode];
    EXPECT_TRUE(order.empty());
    post([&order] { order.push_back(2); });
    NSDate *end = [NSDate dateWithTimeIntervalSinceNow:20];
    while (order.size() < 2 && [end timeIntervalSinceNow] > 0) {
        runFor(0.01);
    }
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    [MainQueue removeFromRunLoop:loop forMode:NSDefaultRunLoopMode];
    post([&order] { order.push_back(3); });
    runFor(0.02);
    EXPECT_EQ(order.size(), 2U);
    EXPECT_EQ([MainQueue drain], 1U);
}

TEST(ObjcDiagnosticsTest, TellsLines) {
    Listener *listener = [[Listener new] autorelease];
    [Diagnostics setSinkTarget:listener action:@selector(heard:)];
    KeloAPI::Diagnostics::write("a line");
    EXPECT_TRUE(same(listener.object, @"a line"));
    int count = 0;
    Block<id> sink([&](id line) { count += [line isEqual:@"another"] ? 1 : 0; });
    [(Class<BlockForms>)[Diagnostics class] setSink:sink.object()];
    KeloAPI::Diagnostics::write("another");
    EXPECT_EQ(count, 1);
    EXPECT_EQ([listener.calls count], 1U);
    [Diagnostics setSinkTarget:nil action:nullptr];
    testing::internal::CaptureStdout();
    KeloAPI::Diagnostics::write("to standard output");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to standard output\n");
    EXPECT_EQ(count, 1);
}

TEST(ObjcMetadataTest, ReadsJson) {
    Metadata *metadata = [[[Metadata alloc]
        initWithJson:json(R"({"count": 70, "nextPage": 3, "previousPage": 1, "size": 20,
                              "anchor": 12, "backAnchor": "b", "title": "T", "nextAfter": 9,
                              "displayCount": 71})")] autorelease];
    EXPECT_EQ(metadata.count, 70);
    EXPECT_TRUE(same(metadata.nextPage, [NSNumber numberWithInt:3]));
    EXPECT_TRUE(same(metadata.previousPage, [NSNumber numberWithInt:1]));
    EXPECT_EQ(metadata.pageSize, 20);
    EXPECT_TRUE(same(metadata.anchor, @"12"));
    EXPECT_TRUE(same(metadata.backAnchor, @"b"));
    EXPECT_TRUE(same(metadata.title, @"T"));
    EXPECT_EQ(metadata.nextAfter, 9);
    EXPECT_EQ(metadata.displayCount, 71);
    metadata.displayCount = 5;
    EXPECT_EQ(metadata.displayCount, 5);
    EXPECT_TRUE(
        same([metadata nextPageParameters:10], json(R"({"page": 3, "anchor": "12", "size": 10})")));
    EXPECT_TRUE(same([metadata previousPageParameters:10],
                     json(R"({"page": 1, "backAnchor": "12", "size": 10})")));
}

TEST(ObjcMetadataTest, MissingValues) {
    Metadata *metadata = [[[Metadata alloc] initWithJson:[NSDictionary dictionary]] autorelease];
    EXPECT_EQ(metadata.count, 0);
    EXPECT_EQ(metadata.nextPage, nil);
    EXPECT_EQ(metadata.previousPage, nil);
    EXPECT_EQ(metadata.anchor, nil);
    EXPECT_EQ(metadata.title, nil);
    EXPECT_EQ([metadata nextPageParameters:10], nil);
    EXPECT_EQ([metadata previousPageParameters:10], nil);
    metadata = [[[Metadata alloc] initWithJson:nil] autorelease];
    EXPECT_NE(metadata, nil);
    EXPECT_EQ(metadata.count, 0);
    NSDictionary *date = [NSDictionary dictionaryWithObject:[NSDate date] forKey:@"title"];
    metadata = [[[Metadata alloc] initWithJson:date] autorelease];
    EXPECT_NE(metadata, nil);
    EXPECT_EQ(metadata.title, nil);
    EXPECT_DEATH([[Metadata alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.Metadata");
}

TEST(ObjcTimelineTest, TellsInstantsAndDurations) {
    Timeline *timeline = [[Timeline new] autorelease];
    NSDate *epoch = [NSDate dateWithTimeIntervalSince1970:0];
    EXPECT_TRUE(same(timeline.requestStartTime, epoch));
    EXPECT_TRUE(same(timeline.initialResponseTime, epoch));
    EXPECT_TRUE(same(timeline.requestCompletedTime, epoch));
    EXPECT_TRUE(same(timeline.serializationCompletedTime, epoch));
    EXPECT_EQ(timeline.latency, 0);
    EXPECT_EQ(timeline.requestDuration, 0);
    EXPECT_EQ(timeline.serializationDuration, 0);
    EXPECT_EQ(timeline.totalDuration, 0);
}
