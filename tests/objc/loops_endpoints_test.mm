// The endpoints that report loops, report and read views, and upload.
#include "objc/EndpointTest.hpp"

#include <KeloAPI/model/KLVideoUpload.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

using LoopEndpointsTest = EndpointTest;

constexpr const char *refusal = R"({"error": "No.", "code": 7})";

/// The identifier of an upload.
std::string mediaId(id upload) {
    return toNative<KeloAPI::KLVideoUpload>(upload)->mediaId;
}

} // namespace

TEST_F(LoopEndpointsTest, SubmitsLoops) {
    LoopsEndpoint *endpoint = [[LoopsEndpoint new] autorelease];
    EXPECT_TRUE(same(endpoint.path, @"loops"));
    KLWatchPost *post = [[KLWatchPost new] autorelease];
    [endpoint submitWithCount:5 post:post];
    EXPECT_TRUE(transport->requests().empty());
    post.postId = @"123";
    [endpoint submitWithCount:5 post:post];
    EXPECT_EQ(sent(), "POST loops");
    NSDictionary *loop = [[json(lastBody().c_str()) objectForKey:@"loops"] objectAtIndex:0];
    EXPECT_EQ([[loop objectForKey:@"count"] intValue], 5);
    EXPECT_TRUE(same([loop objectForKey:@"postId"], @"123"));
    EXPECT_LT(fabs([[loop objectForKey:@"ts"] doubleValue] - [[NSDate date] timeIntervalSince1970]),
              20);
    EXPECT_TRUE(same([raised([&] { [endpoint submitWithCount:5 post:nil]; }) name],
                     NSInvalidArgumentException));
}

TEST_F(LoopEndpointsTest, ReadsAndReportsViews) {
    LongformViewsEndpoint *endpoint =
        [[[LongformViewsEndpoint alloc] initWithLongformId:@"abc"] autorelease];
    id<EndpointRequest> handle = [endpoint fetchViewsWithTarget:listener
                                                         action:@selector(heard:and:)];
    EXPECT_NE(handle, nil);
    ASSERT_TRUE(answered(R"({"data": {"longformId": "abc", "count": 71}})"));
    EXPECT_EQ(sent(), "GET longforms/abc/views");
    EXPECT_EQ([(KLLongformViews *)listener.object count], 71);
    EXPECT_TRUE(same([(KLLongformViews *)listener.object longformId], @"abc"));
    EXPECT_EQ(listener.second, nil);
    EXPECT_NE([endpoint submitViewWithTarget:listener action:@selector(heard:)], nil);
    ASSERT_TRUE(answered(R"({"data": {}})"));
    EXPECT_EQ(sent(), "POST longforms/abc/views");
    EXPECT_TRUE(
        [[json(lastBody().c_str()) objectForKey:@"timestamp"] isKindOfClass:[NSString class]]);
    EXPECT_EQ(listener.object, nil);
    [endpoint submitViewWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ([listener.object code], 7);
    [endpoint fetchViewsWithTarget:listener action:@selector(heard:and:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ(listener.object, nil);
    EXPECT_EQ([listener.second code], 7);
}

TEST_F(LoopEndpointsTest, Views) {
    KLLongformViews *views = [[[KLLongformViews alloc] initWithLongformId:@"x"
                                                                    count:-2] autorelease];
    EXPECT_TRUE(same(views.longformId, @"x"));
    EXPECT_EQ(views.count, -2);
}

TEST_F(LoopEndpointsTest, Uploads) {
    LongformUploadEndpoint *endpoint = [[LongformUploadEndpoint new] autorelease];
    SEL both = @selector(heard:and:);
    EXPECT_NE([endpoint initiateUploadWithTotalBytes:1048576 target:listener action:both], nil);
    ASSERT_TRUE(answered(R"({"data": {"mediaId": "m1"}})"));
    EXPECT_EQ(sent(), "POST upload/longform-videos?mediaType=video%2Fmp4&totalBytes=1048576");
    EXPECT_EQ(mediaId(listener.object), "m1");
    EXPECT_EQ(listener.second, nil);

    NSData *segment = [@"segment" dataUsingEncoding:NSUTF8StringEncoding];
    EXPECT_NE([endpoint uploadSegmentWithMediaId:@"m1"
                                            data:segment
                                    segmentIndex:4
                                          target:listener
                                          action:@selector(heard:)],
              nil);
    ASSERT_TRUE(answered(R"({"data": {}})"));
    EXPECT_EQ(sent(), "PUT upload/longform-videos/m1?segmentIndex=4");
    EXPECT_EQ(lastBody(), "segment");
    EXPECT_EQ(listener.object, nil);
    EXPECT_EQ(endpoint.parameterEncoding, ParameterEncodingCustom);

    EXPECT_NE([endpoint finalizeUploadWithMediaId:@"m1" target:listener action:both], nil);
    ASSERT_TRUE(answered(R"({"data": {"mediaId": "m1"}})"));
    EXPECT_EQ(sent(), "POST upload/longform-videos/m1");
    EXPECT_EQ(mediaId(listener.object), "m1");

    EXPECT_NE([endpoint checkStatusWithMediaId:@"m1" target:listener action:both], nil);
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ(sent(), "GET upload/longform-videos/m1/status");
    EXPECT_EQ(listener.object, nil);
    EXPECT_EQ([listener.second code], 7);
}

TEST_F(LoopEndpointsTest, Blocks) {
    int count = 0;
    Block<id, id> two([&](id first, id second) { count += first != nil && second == nil ? 1 : 0; });
    Block<id> one([&](id error) { count += error == nil ? 1 : 0; });
    const auto hears = [&](const char *body) {
        const int before = count;
        transport->answer(ScriptedAnswer::json(body));
        return KeloAPI::testing::runUntil([&] { return count == before + 1; });
    };
    id views = [[[LongformViewsEndpoint alloc] initWithLongformId:@"abc"] autorelease];
    EXPECT_NE([blocks(views) fetchViewsWithCompletion:two.object()], nil);
    EXPECT_TRUE(hears(R"({"data": {"longformId": "abc", "count": 1}})"));
    EXPECT_NE([blocks(views) submitViewWithCompletion:one.object()], nil);
    EXPECT_TRUE(hears(R"({"data": {}})"));
    id upload = [[LongformUploadEndpoint new] autorelease];
    EXPECT_NE([blocks(upload) initiateUploadWithTotalBytes:3 completion:two.object()], nil);
    EXPECT_TRUE(hears(R"({"data": {"mediaId": "m1"}})"));
    EXPECT_NE([blocks(upload) uploadSegmentWithMediaId:@"m1"
                                                  data:[NSData data]
                                          segmentIndex:0
                                            completion:one.object()],
              nil);
    EXPECT_TRUE(hears(R"({"data": {}})"));
    EXPECT_NE([blocks(upload) finalizeUploadWithMediaId:@"m1" completion:two.object()], nil);
    EXPECT_TRUE(hears(R"({"data": {"mediaId": "m1"}})"));
    EXPECT_NE([blocks(upload) checkStatusWithMediaId:@"m1" completion:two.object()], nil);
    EXPECT_TRUE(hears(R"({"data": {"mediaId": "m1"}})"));
}
