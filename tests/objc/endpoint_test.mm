#include "objc/EndpointTest.hpp"

#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

using Parser = KeloAPI::AnyObjectJsonParser;

/// Makes an empty object of each record that has no "bad".
class EmptyParser final : public Parser {
    std::shared_ptr<KeloAPI::Object> parse(const KeloAPI::JsonObject &json) const override {
        if (json["bad"].number()) {
            throw KeloAPI::JsonParseError(KeloAPI::JsonParseError::InsufficientData);
        }
        return std::make_shared<KeloAPI::KLEmpty>();
    }
};

class ObjcEndpointTest : public EndpointTest {
protected:
    Endpoint *const endpoint = [[[Endpoint alloc] initWithSession:registrySession()] autorelease];
    AnyObjectJsonParser *const parser = toObjC(std::make_shared<EmptyParser>());
};

} // namespace

TEST_F(ObjcEndpointTest, Defaults) {
    EXPECT_TRUE(same(endpoint.path, @""));
    EXPECT_TRUE(same(endpoint.method, @"GET"));
    EXPECT_EQ(endpoint.parameterEncoding, ParameterEncodingURL);
    EXPECT_TRUE(same(endpoint.parameters, [NSDictionary dictionary]));
    EXPECT_EQ(endpoint.session, registrySession());
}

TEST_F(ObjcEndpointTest, TakesWhatIsSet) {
    endpoint.path = @"users/me";
    endpoint.parameterEncoding = ParameterEncodingJSON;
    EXPECT_TRUE(same(endpoint.path, @"users/me"));
    EXPECT_EQ(endpoint.parameterEncoding, ParameterEncodingJSON);
    for (NSString *method : {@"OPTIONS", @"GET", @"HEAD", @"POST", @"PUT", @"PATCH", @"DELETE",
                             @"TRACE", @"CONNECT"}) {
        endpoint.method = method;
        EXPECT_TRUE(same(endpoint.method, method));
    }
}

TEST_F(ObjcEndpointTest, RefusesWhatCannotBe) {
    const auto refuses = [](NSException *exception) {
        return same([exception name], NSInvalidArgumentException);
    };
    EXPECT_TRUE(refuses(raised([&] { endpoint.method = @"get"; })));
    EXPECT_TRUE(refuses(raised([&] { endpoint.parameterEncoding = ParameterEncodingCustom; })));
    EXPECT_TRUE(refuses(raised([&] {
        endpoint.parameters = [NSDictionary dictionaryWithObject:[NSDate date] forKey:@"when"];
    })));
    EXPECT_TRUE(refuses(raised([&] {
        endpoint.parameters = [NSDictionary dictionaryWithObject:@"x"
                                                          forKey:[NSNumber numberWithInt:1]];
    })));
    EXPECT_TRUE(
        refuses(raised([&] { [endpoint requestWithTarget:listener action:@selector(unknown)]; })));
}

TEST_F(ObjcEndpointTest, KeepsTheKindsOfParameters) {
    NSDictionary *kinds = json(R"({"text": "t", "whole": -3, "real": 0.5, "yes": true,
                                   "none": null, "list": [1, "b"], "map": {"a": {"b": 2}}})");
    endpoint.parameters = kinds;
    EXPECT_TRUE(same(endpoint.parameters, kinds));
    NSNumber *largest = [NSNumber numberWithUnsignedLongLong:18446744073709551615ULL];
    endpoint.parameters = [NSDictionary dictionaryWithObject:largest forKey:@"n"];
    EXPECT_TRUE(
        same([[endpoint.parameters objectForKey:@"n"] stringValue], @"18446744073709551615"));
    endpoint.parameters = nil;
    EXPECT_EQ([endpoint.parameters count], 0U);
}

TEST_F(ObjcEndpointTest, EqualByPath) {
    Endpoint *other = [[[Endpoint alloc] initWithSession:registrySession()] autorelease];
    EXPECT_TRUE([endpoint isEqual:other]);
    EXPECT_EQ([endpoint hash], [other hash]);
    other.path = @"a";
    EXPECT_FALSE([endpoint isEqual:other]);
    endpoint.path = @"a";
    endpoint.method = @"POST";
    EXPECT_TRUE([endpoint isEqual:other]);
    EXPECT_FALSE([endpoint isEqual:@"a"]);
    EXPECT_FALSE([endpoint isEqual:nil]);
}

TEST_F(ObjcEndpointTest, MakesItsRequest) {
    delegate->sessionKey = "key";
    delegate->polling = true;
    EXPECT_TRUE(same([endpoint headerFields],
                     json(R"({"kelo-session-id": "key", "X-Kelo-Polling": "true"})")));
    endpoint.path = @"users/me";
    endpoint.method = @"POST";
    endpoint.parameterEncoding = ParameterEncodingJSON;
    endpoint.parameters = json(R"({"a": 1})");
    NSMutableURLRequest *request = [endpoint URLRequest];
    EXPECT_TRUE(same([[request URL] absoluteString], @"https://service.example/users/me"));
    EXPECT_TRUE(same([request HTTPMethod], @"POST"));
    EXPECT_TRUE(same([request valueForHTTPHeaderField:@"kelo-session-id"], @"key"));
    EXPECT_TRUE(same([request HTTPBody], [@"{\"a\":1}" dataUsingEncoding:NSUTF8StringEncoding]));
    endpoint.path = @"http://h?x=1";
    EXPECT_TRUE(same([[[endpoint URLRequest] URL] absoluteString], @"http://h/?x=1"));
    endpoint.path = @"http://[";
    EXPECT_EQ([[endpoint URLRequest] URL], nil);
}

TEST_F(ObjcEndpointTest, HandsOutText) {
    endpoint.path = @"about";
    id<EndpointRequest> handle = [endpoint requestWithTarget:listener action:@selector(heard:and:)];
    EXPECT_TRUE([(id)handle isMemberOfClass:[AlamofireEndpointRequest class]]);
    ASSERT_TRUE(answered("hello"));
    EXPECT_EQ(sent(), "GET about");
    EXPECT_TRUE(same(listener.object, @"hello"));
    EXPECT_EQ(listener.second, nil);
    EXPECT_TRUE(listener.onMainThread);
}

TEST_F(ObjcEndpointTest, TransportErrorsHaveTheirDomain) {
    [endpoint requestWithTarget:listener action:@selector(heard:and:)];
    transport->answer(ScriptedAnswer::failure(KeloAPI::Error("some.domain", 7)));
    ASSERT_TRUE(hears(1));
    EXPECT_EQ(listener.object, nil);
    EXPECT_TRUE(same([listener.second domain], @"some.domain"));
    EXPECT_EQ([listener.second code], 7);
}

TEST_F(ObjcEndpointTest, ParsesRecords) {
    [endpoint requestWithParser:parser target:listener action:@selector(heard:and:and:and:)];
    ASSERT_TRUE(answered(R"({"data": {"records": [{}, {}], "count": 7, "nextPage": 2}})"));
    NSArray *call = [listener.calls lastObject];
    ASSERT_EQ([listener.object count], 2U);
    EXPECT_TRUE([[listener.object objectAtIndex:1] isMemberOfClass:[KLEmpty class]]);
    EXPECT_EQ([(Metadata *)listener.second count], 7);
    Timeline *timeline = [call objectAtIndex:2];
    EXPECT_LT(fabs([timeline.requestStartTime timeIntervalSinceNow]), 20);
    EXPECT_GE(timeline.totalDuration, 0);
    EXPECT_EQ([call objectAtIndex:3], [NSNull null]);
}

TEST_F(ObjcEndpointTest, ParseFailures) {
    [endpoint requestWithParser:parser target:listener action:@selector(heard:and:and:and:)];
    ASSERT_TRUE(answered(R"({"data": {"records": [{}, {"bad": 1}]}})"));
    EXPECT_TRUE(same(listener.object, [NSArray array]));
    EXPECT_EQ(listener.second, nil);
    NSError *error = [[listener.calls lastObject] objectAtIndex:3];
    EXPECT_EQ([error code], -1);
    EXPECT_TRUE(same([error localizedDescription], @"Unable to parse posts from response"));
}

TEST_F(ObjcEndpointTest, ServiceErrors) {
    [endpoint requestWithParser:parser target:listener action:@selector(heard:and:and:and:)];
    ASSERT_TRUE(answered(R"({"error": "Solve it.", "code": 419,
                             "data": "https://service.example/captcha"})"));
    NSError *error = [[listener.calls lastObject] objectAtIndex:3];
    EXPECT_EQ([error code], 419);
    EXPECT_TRUE(same([error localizedDescription], @"Solve it."));
    EXPECT_TRUE(
        same([[error userInfo] objectForKey:KLAPIStatusCodeKey], [NSNumber numberWithInt:419]));
    EXPECT_TRUE(same([[error userInfo] objectForKey:KLCaptchaUrlKey],
                     [NSURL URLWithString:@"https://service.example/captcha"]));
    EXPECT_EQ(delegate->captchaUrls.size(), 1U);
}

TEST_F(ObjcEndpointTest, CaptchasWithoutAPath) {
    [endpoint requestWithParser:parser target:listener action:@selector(heard:and:and:and:)];
    ASSERT_TRUE(answered(R"({"error": "Solve it.", "code": 419, "data": "https://h?x=1"})"));
    NSError *error = [[listener.calls lastObject] objectAtIndex:3];
    EXPECT_EQ([error code], 419);
    EXPECT_TRUE(same([[error userInfo] objectForKey:KLCaptchaUrlKey],
                     [NSURL URLWithString:@"https://h/?x=1"]));
}

TEST_F(ObjcEndpointTest, RetriesCallAgain) {
    [endpoint requestWithParser:parser target:listener action:@selector(heard:and:and:and:)];
    ASSERT_TRUE(answered(R"({"error": "Sign in.", "code": 100})"));
    EXPECT_EQ(delegate->reauthCount, 1);
    [registrySession() handleQueuedRetriesWithShouldRetry:YES];
    ASSERT_TRUE(answered(R"({"data": {}})"));
    EXPECT_EQ([[listener.calls lastObject] objectAtIndex:3], [NSNull null]);
    EXPECT_EQ(transport->requests().size(), 2U);
}

TEST_F(ObjcEndpointTest, Uploads) {
    endpoint.method = @"PUT";
    NSMutableData *bytes = [NSMutableData dataWithBytes:"abc" length:3];
    [endpoint uploadWithParser:parser
                          data:bytes
                        target:listener
                        action:@selector(heard:and:and:and:)];
    [bytes setLength:0]; // what is sent is what it was
    ASSERT_TRUE(answered(R"({"data": {}})"));
    EXPECT_EQ(lastBody(), "abc");
    EXPECT_EQ(lastRequest().method, KeloAPI::Method::PUT);
    EXPECT_TRUE(same(listener.object, [NSArray array]));
}

TEST_F(ObjcEndpointTest, Downloads) {
    NSString *file = [NSTemporaryDirectory()
        stringByAppendingPathComponent:[[NSProcessInfo processInfo] globallyUniqueString]];
    NSURL *destination = [NSURL fileURLWithPath:file];
    Listener *progress = [[Listener new] autorelease];
    [endpoint setDownloadProgressTarget:progress action:@selector(bytes:total:expected:)];
    [endpoint downloadWithDestinationUrl:destination target:listener action:@selector(heard:and:)];
    ASSERT_TRUE(answered("bytes"));
    EXPECT_EQ(listener.second, nil);
    EXPECT_TRUE(same([listener.object path], file));
    EXPECT_TRUE(same([NSString stringWithContentsOfFile:file], @"bytes"));
    EXPECT_EQ([progress countAt:0], 5);
    EXPECT_EQ([progress countAt:1], 5);
    EXPECT_EQ([progress countAt:2], 5);

    const NSUInteger reports = [progress.calls count];
    [endpoint setDownloadProgressTarget:nil action:nullptr];
    [endpoint downloadWithDestinationUrl:destination target:listener action:@selector(heard:and:)];
    ASSERT_TRUE(answered("other"));
    EXPECT_EQ([progress.calls count], reports);
    EXPECT_TRUE([[NSFileManager defaultManager] removeFileAtPath:file handler:nil]);
}

TEST_F(ObjcEndpointTest, HandlesTellProgressAndCancel) {
    const auto manual = std::make_shared<KeloAPI::testing::ManualTransport>();
    session->setSessionManager(std::make_shared<KeloAPI::Manager>(manual));
    id<EndpointRequest> handle = [endpoint requestWithTarget:listener action:@selector(heard:and:)];
    Listener *progress = [[Listener new] autorelease];
    [handle setProgressTarget:progress action:@selector(request:fraction:)];
    manual->head(200, 8);
    manual->data("ab");
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return [progress.calls count] == 1; }));
    EXPECT_EQ(progress.fraction, 0.25);
    EXPECT_EQ(progress.object, handle);
    [handle setProgressTarget:nil action:nullptr];
    manual->data("cd");
    [handle cancel];
    EXPECT_EQ(manual->cancelCount, 1);
    manual->complete(KeloAPI::httpError(KeloAPI::HTTPErrorCode::Cancelled, "cancelled"));
    ASSERT_TRUE(hears(1));
    EXPECT_EQ([progress.calls count], 1U);
    EXPECT_EQ([listener.second code], static_cast<NSInteger>(KeloAPI::HTTPErrorCode::Cancelled));
}

TEST_F(ObjcEndpointTest, AHandleOfNoCall) {
    AlamofireEndpointRequest *handle = [[AlamofireEndpointRequest new] autorelease];
    [handle setProgressTarget:listener action:@selector(request:fraction:)];
    [handle cancel];
    EXPECT_EQ([listener.calls count], 0U);
    EXPECT_EQ([blocks(handle) progressHandler], nil);
    Block<id, double> progress([](id, double) {});
    [blocks(handle) setProgressHandler:progress.object()];
    EXPECT_EQ([blocks(handle) progressHandler], progress.object());
    [blocks(handle) setProgressHandler:nil];
    EXPECT_EQ([blocks(handle) progressHandler], nil);
}

TEST_F(ObjcEndpointTest, KeepsTheTargetUntilTheCallHasEnded) {
    const NSUInteger count = [listener retainCount];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    [endpoint requestWithTarget:listener action:@selector(heard:and:)];
    EXPECT_GT([listener retainCount], count);
    ASSERT_TRUE(answered("x"));
    [pool drain];
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return [listener retainCount] == count; }));
}

TEST_F(ObjcEndpointTest, ANilTargetHearsNothing) {
    [endpoint requestWithTarget:nil action:nullptr];
    transport->answer(ScriptedAnswer::json("{}"));
    [endpoint requestWithTarget:listener action:@selector(heard:and:)];
    EXPECT_TRUE(answered("x"));
}

TEST_F(ObjcEndpointTest, Blocks) {
    int count = 0;
    Block<id, id> text(
        [&](id first, id second) { count += [first isEqual:@"hello"] && second == nil ? 1 : 0; });
    [blocks(endpoint) requestWithCompletionHandler:text.object()];
    transport->answer(ScriptedAnswer::json("hello"));
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return count == 1; }));

    Block<id, id, id, id> parsed([&](id items, id metadata, id timeline, id error) {
        count += [items count] == 1 && metadata == nil && timeline != nil && error == nil ? 1 : 0;
    });
    [blocks(endpoint) requestWithParser:parser completionHandler:parsed.object()];
    transport->answer(ScriptedAnswer::json(R"({"data": {"a": 1}})"));
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return count == 2; }));
    [blocks(endpoint) uploadWithParser:parser data:nil completionHandler:parsed.object()];
    transport->answer(ScriptedAnswer::json(R"({"data": {"a": 1}})"));
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return count == 3; }));

    int64_t received = 0;
    Block<int64_t, int64_t, int64_t> progress(
        [&](int64_t, int64_t total, int64_t) { received = total; });
    Block<id, id> downloaded([&](id, id error) { count += error != nil ? 1 : 0; });
    [blocks(endpoint) setDownloadProgressHandler:progress.object()];
    [blocks(endpoint) downloadWithDestinationUrl:[NSURL fileURLWithPath:@"/none/such/file"]
                               completionHandler:downloaded.object()];
    transport->answer(ScriptedAnswer::json("abc"));
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return count == 4; }));
    [blocks(endpoint) setDownloadProgressHandler:nil];
}

/// Without a blocks runtime, one on the stack would be gone when it is called.
TEST_F(ObjcEndpointTest, ABlockThatCannotBeCopiedIsRefused) {
    Block<id> onStack([](id) {}, StackBlock);
    NSException *exception = raised([&] { blockToKeep(onStack.object(), nullptr); });
    EXPECT_TRUE(same([exception name], NSInvalidArgumentException));
    EXPECT_TRUE([[exception reason] hasPrefix:@"a block on the stack"]);
    Block<id> global([](id) {}, GlobalBlock);
    EXPECT_EQ(blockToKeep(global.object(), nullptr), global.object());
    Block<id> onHeap([](id) {}, HeapBlock);
    EXPECT_EQ(blockToKeep(onHeap.object(), nullptr), onHeap.object());
}
