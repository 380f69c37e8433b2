// Endpoints of classes that a host derives.
#include "objc/EndpointTest.hpp"

#include <KeloAPI/api/Endpoint.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

/// Adds a header field.
@interface MarkedTimeline : TimelineEndpoint
@end

@implementation MarkedTimeline
- (NSDictionary *)headerFields {
    NSMutableDictionary *fields =
        [NSMutableDictionary dictionaryWithDictionary:[super headerFields]];
    [fields setObject:@"yes" forKey:@"X-Marked"];
    return fields;
}
@end

/// Sends a body of its own elsewhere.
@interface OtherRequest : Endpoint
@end

@implementation OtherRequest
- (NSMutableURLRequest *)URLRequest {
    NSMutableURLRequest *request = [super URLRequest];
    [request setURL:[NSURL URLWithString:@"https://service.example/other"]];
    [request setHTTPMethod:@"PUT"];
    [request setHTTPBody:[@"body" dataUsingEncoding:NSUTF8StringEncoding]];
    [request setTimeoutInterval:1.5];
    return request;
}
@end

/// Flags a post.
@interface FlagAction : PostActionEndpoint
@end

@implementation FlagAction
- (void)setPathForOn:(BOOL)on {
    [super setPathForOn:on];
    self.path = [NSString stringWithFormat:@"posts/%@/%@", self.post.postId, on ? @"flag" : @"not"];
}
@end

@interface LoudLike : LikeActionEndpoint
@end

@implementation LoudLike
- (void)setPathForOn:(BOOL)on {
    [super setPathForOn:on];
    self.path = [self.path stringByAppendingString:@"/loud"];
}
@end

namespace {

class HostEndpointsTest : public EndpointTest {
protected:
    HostEndpointsTest() { post.postId = @"7"; }

    KLWatchPost *const post = [[KLWatchPost new] autorelease];
};

} // namespace

TEST_F(HostEndpointsTest, HeaderFieldsAreSent) {
    MarkedTimeline *endpoint = [[[MarkedTimeline alloc] initWithPath:@"users/1"] autorelease];
    [endpoint fetchWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"records": []}})"));
    const auto fields = lastRequest().headerFields;
    ASSERT_EQ(fields.count("X-Marked"), 1U);
    EXPECT_EQ(fields.at("X-Marked"), "yes");
    EXPECT_EQ(fields.size(), [[endpoint headerFields] count]);
    EXPECT_EQ(sent().rfind("GET timelines/users/1?", 0), 0U) << sent();
    NSURLRequest *request = [endpoint URLRequest];
    EXPECT_TRUE(same([request valueForHTTPHeaderField:@"X-Marked"], @"yes"));
}

TEST_F(HostEndpointsTest, RequestsAreSent) {
    OtherRequest *endpoint = [[[OtherRequest alloc] initWithSession:registrySession()] autorelease];
    [endpoint requestWithTarget:listener action:@selector(heard:and:)];
    ASSERT_TRUE(answered("{}"));
    EXPECT_EQ(sent(), "PUT other");
    EXPECT_EQ(lastRequest().body.value_or(KeloAPI::Data()).text(), "body");
    EXPECT_EQ(lastRequest().timeoutInterval, std::chrono::milliseconds(1500));
}

TEST_F(HostEndpointsTest, PathsOfActionsAreSent) {
    AnyObjectJsonParser *parser = [[PostParser new] autorelease];
    FlagAction *flag = [[[FlagAction alloc] initWithPost:post parser:parser] autorelease];
    [flag toggleOn:YES target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"postId": "7"}})"));
    EXPECT_EQ(sent(), "POST posts/7/flag");
    [flag toggleOn:NO target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"postId": "7"}})"));
    EXPECT_EQ(sent(), "DELETE posts/7/not");
    LoudLike *like = [[[LoudLike alloc] initWithPost:post] autorelease];
    [like toggleOn:YES target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"likeId": "1"}})"));
    EXPECT_EQ(sent(), "POST posts/7/likes/loud");
}

TEST_F(HostEndpointsTest, AnEndpointThatOnlyTheLibraryHoldsIsAsked) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    MarkedTimeline *endpoint = [[MarkedTimeline alloc] initWithPath:@"a"];
    const auto native = toNative<KeloAPI::Endpoint>(endpoint);
    EXPECT_EQ(native->headerFields().count("X-Marked"), 1U);
    [endpoint release];
    [pool drain];
    EXPECT_EQ(native->headerFields().count("X-Marked"), 1U);
    EXPECT_EQ(toObjC(native), endpoint);
}
