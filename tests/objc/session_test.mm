#include "objc/Block.hpp"
#include "objc/HostDelegate.h"
#include "objc/Listener.h"
#include "objc/ObjcTest.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

Session *sessionOf(SessionType type) {
    return [[[Session alloc] initWithSessionType:type] autorelease];
}

class SessionTest : public testing::Test {
protected:
    HostDelegate *delegate = [[HostDelegate new] autorelease];
    Session *session = sessionOf(SessionTypeAuthenticated);
};

} // namespace

TEST_F(SessionTest, HasItsRuntimeName) {
    EXPECT_TRUE(same(NSStringFromClass([session class]), @"KeloAPI.Session"));
    EXPECT_TRUE([session isKindOfClass:[Session class]]);
    EXPECT_EQ([Session class], NSClassFromString(@"KeloAPI.Session"));
    EXPECT_EQ([Session class], NSClassFromString(@"Session"));
    EXPECT_TRUE([session isMemberOfClass:[Session class]]);
    EXPECT_TRUE([session conformsToProtocol:@protocol(EndpointErrorHandler)]);
    EXPECT_TRUE(same(NSStringFromClass([toObjC(std::make_shared<KeloAPI::Session>(
                         KeloAPI::SessionType::Authenticated)) class]),
                     @"KeloAPI.Session"));
}

TEST_F(SessionTest, KeepsItsType) {
    EXPECT_EQ(session.sessionType, SessionTypeAuthenticated);
    EXPECT_EQ(sessionOf(SessionTypeUnAuthenticated).sessionType, SessionTypeUnAuthenticated);
    EXPECT_TRUE([Session certificatePinningEnabled]);
}

TEST_F(SessionTest, PinsWhatIsACertificate) {
    [session pinCertificates:[NSArray array]];
    NSData *text = [@"-----BEGIN" dataUsingEncoding:NSUTF8StringEncoding];
    const auto pinText = [&] { [session pinCertificates:[NSArray arrayWithObject:text]]; };
    EXPECT_TRUE(same([raised(pinText) reason], @"not a certificate"));
}

TEST_F(SessionTest, WithoutADelegate) {
    EXPECT_EQ(session.delegate, nil);
    EXPECT_GT([session.host length], 0U);
    EXPECT_TRUE(same(session.schema, @"https://"));
    EXPECT_EQ(session.sessionId, nil);
    EXPECT_EQ(session.acceptLanguage, nil);
    EXPECT_EQ(session.userAgent, nil);
    EXPECT_EQ(session.keloClient, nil);
    EXPECT_FALSE(session.polling);
}

TEST_F(SessionTest, DelegateThatKnowsNothing) {
    NSString *builtIn = session.host;
    session.delegate = delegate;
    EXPECT_TRUE(same(session.host, builtIn));
    EXPECT_TRUE(same(session.schema, @"https://"));
    EXPECT_EQ(session.sessionId, nil);
}

TEST_F(SessionTest, AsksItsDelegate) {
    delegate->host = @"service.example";
    delegate->schema = @"http://";
    delegate->sessionKey = @"key";
    delegate->acceptLanguage = @"de";
    delegate->userAgent = @"agent";
    delegate->keloClient = @"client";
    delegate->polling = YES;
    session.delegate = delegate;
    const auto hears = [this](NSString *answer, NSString *expected) {
        const bool asked = delegate->asking == session;
        delegate->asking = nil;
        return asked && [answer isEqual:expected];
    };
    EXPECT_EQ(session.delegate, delegate);
    EXPECT_TRUE(hears(session.host, @"service.example"));
    EXPECT_TRUE(hears(session.schema, @"http://"));
    EXPECT_TRUE(hears(session.sessionId, @"key"));
    EXPECT_TRUE(hears(session.acceptLanguage, @"de"));
    EXPECT_TRUE(hears(session.userAgent, @"agent"));
    EXPECT_TRUE(hears(session.keloClient, @"client"));
    EXPECT_TRUE(session.polling);
    EXPECT_EQ(delegate->asking, session);
}

TEST_F(SessionTest, DoesNotKeepItsDelegate) {
    BOOL gone = NO;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    HostDelegate *own = [HostDelegate new];
    own->gone = &gone;
    own->host = @"service.example";
    session.delegate = own;
    EXPECT_TRUE(same(session.host, @"service.example"));
    [own release];
    [pool drain];
    EXPECT_TRUE(gone);
    EXPECT_EQ(session.delegate, nil);
    EXPECT_FALSE(same(session.host, @"service.example"));
}

TEST_F(SessionTest, DelegateOfClassesThatAreDerivedFromEachOther) {
    BOOL gone = NO;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    CountingDelegate *derived = [CountingDelegate new];
    derived->gone = &gone;
    session.delegate = derived;
    Session *other = sessionOf(SessionTypeAuthenticated);
    other.delegate = delegate; // of the class that the first one's is derived from
    EXPECT_EQ(session.delegate, derived);
    const int before = [CountingDelegate releases];
    [derived retain];
    [derived release];
    EXPECT_EQ([CountingDelegate releases], before + 1);
    [derived release];
    [pool drain];
    EXPECT_TRUE(gone);
    EXPECT_EQ(session.delegate, nil);
}

TEST_F(SessionTest, DelegateThatIsObserved) {
    BOOL gone = NO;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    HostDelegate *own = [HostDelegate new];
    own->gone = &gone;
    [own addObserver:delegate forKeyPath:@"host" options:0 context:nullptr];
    session.delegate = own;
    [own removeObserver:delegate forKeyPath:@"host"];
    EXPECT_EQ(session.delegate, own);
    [own release];
    [pool drain];
    EXPECT_TRUE(gone);
    EXPECT_EQ(session.delegate, nil);
}

TEST_F(SessionTest, LetsGoWhatBelongsToADelegate) {
    std::weak_ptr<KeloAPI::SessionDelegate> asking;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    HostDelegate *own = [HostDelegate new];
    session.delegate = own;
    asking = toNative<KeloAPI::Session>(session)->delegate();
    EXPECT_FALSE(asking.expired());
    [own release];
    [pool drain];
    EXPECT_TRUE(asking.expired());
}

TEST_F(SessionTest, AClassCanBeTheDelegate) {
    session.delegate = (id<SessionDelegate>)[HostDelegate class];
    EXPECT_EQ(static_cast<id>(session.delegate), static_cast<id>([HostDelegate class]));
    session.delegate = nil;
    EXPECT_EQ(session.delegate, nil);
}

TEST_F(SessionTest, QueuesRetriesAndTellsTheDelegate) {
    session.delegate = delegate;
    Endpoint *endpoint = [[[Endpoint alloc] initWithSession:session] autorelease];
    Listener *listener = [[Listener new] autorelease];
    [session endpointRequiresAuth:endpoint retryTarget:listener action:@selector(heard)];
    [session endpointRequiresAuth:endpoint retryTarget:nil action:nullptr];
    EXPECT_EQ(delegate->reauthCount, 2);
    EXPECT_EQ(delegate->asking, session);
    EXPECT_EQ([listener.calls count], 0U);
    [session handleQueuedRetriesWithShouldRetry:YES];
    EXPECT_EQ([listener.calls count], 1U);
    [session handleQueuedRetriesWithShouldRetry:YES];
    EXPECT_EQ([listener.calls count], 1U);
}

TEST_F(SessionTest, DropsRetries) {
    Listener *listener = [[Listener new] autorelease];
    const NSUInteger count = [listener retainCount];
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    [session endpointRequiresAuth:nil retryTarget:listener action:@selector(heard)];
    EXPECT_EQ([listener retainCount], count + 1);
    [session handleQueuedRetriesWithShouldRetry:NO];
    [pool drain];
    EXPECT_EQ([listener retainCount], count);
    EXPECT_EQ([listener.calls count], 0U);
}

TEST_F(SessionTest, QueuesCaptchasThatAreAccepted) {
    session.delegate = delegate;
    Listener *listener = [[Listener new] autorelease];
    NSURL *address = [NSURL URLWithString:@"https://service.example/captcha"];
    [session endpointRequiresCaptcha:nil
                          captchaUrl:address
                         retryTarget:listener
                              action:@selector(heard)];
    EXPECT_TRUE(same(delegate->captchaUrl, address));
    [session handleQueuedRetriesWithShouldRetry:YES];
    EXPECT_EQ([listener.calls count], 0U);
    const auto without = KeloAPI::URL::parse("https://h?x=1");
    toNative<KeloAPI::Session>(session)->endpointRequiresCaptcha(nullptr, *without, [] {});
    EXPECT_TRUE(same([delegate->captchaUrl absoluteString], @"https://h/?x=1"));
    delegate->handlesCaptcha = YES;
    [session endpointRequiresCaptcha:nil
                          captchaUrl:address
                         retryTarget:listener
                              action:@selector(heard)];
    [session handleQueuedRetriesWithShouldRetry:YES];
    EXPECT_EQ([listener.calls count], 1U);
    EXPECT_TRUE(same([raised([&] {
                         [session endpointRequiresCaptcha:nil
                                               captchaUrl:nil
                                              retryTarget:listener
                                                   action:@selector(heard)];
                     }) name],
                     NSInvalidArgumentException));
}

TEST_F(SessionTest, RetriesAsBlocks) {
    delegate->handlesCaptcha = YES;
    session.delegate = delegate;
    int count = 0;
    Block<> retry([&count] { ++count; });
    id<BlockForms> blocks = (id<BlockForms>)session;
    [blocks endpointRequiresAuth:nil retry:retry.object()];
    [blocks endpointRequiresAuth:nil retry:nil];
    [blocks endpointRequiresCaptcha:nil
                         captchaUrl:[NSURL URLWithString:@"https://service.example/captcha"]
                              retry:retry.object()];
    [session handleQueuedRetriesWithShouldRetry:YES];
    EXPECT_EQ(count, 2);
}

TEST_F(SessionTest, ATargetKnowsItsAction) {
    EXPECT_TRUE(same([raised([&] {
                         [session endpointRequiresAuth:nil
                                           retryTarget:[[NSObject new] autorelease]
                                                action:@selector(heard)];
                     }) name],
                     NSInvalidArgumentException));
}

TEST_F(SessionTest, PlainInitialiserIsNotOffered) {
    EXPECT_DEATH([[Session alloc] init], "unimplemented initialiser init\\(\\) of class "
                                         "KeloAPI.Session");
}

namespace {

class ApiTest : public SessionTest {
protected:
    ~ApiTest() override { [Api setSessionDelegate:nil]; }
};

} // namespace

TEST_F(ApiTest, OneSessionOfEachType) {
    Session *authenticated = [Api session:SessionTypeAuthenticated];
    EXPECT_EQ([Api session:SessionTypeAuthenticated], authenticated);
    EXPECT_EQ(toNative(authenticated), KeloAPI::Api::session(KeloAPI::SessionType::Authenticated));
    Session *other = [Api session:SessionTypeUnAuthenticated];
    EXPECT_NE(other, authenticated);
    EXPECT_EQ(other.sessionType, SessionTypeUnAuthenticated);
}

TEST_F(ApiTest, ThereAreNoOtherTypes) {
    const auto unknown = static_cast<SessionType>(2);
    for (const SessionType type : {unknown, static_cast<SessionType>(-1)}) {
        EXPECT_TRUE(same([raised([&] { [Api session:type]; }) name], NSInvalidArgumentException));
        EXPECT_TRUE(same([raised([&] { [Api session:type delegate:nil]; }) name],
                         NSInvalidArgumentException));
        Session *unmade = [Session alloc]; // raising, it lets itself go
        EXPECT_TRUE(same([raised([&] { [unmade initWithSessionType:type]; }) name],
                         NSInvalidArgumentException));
    }
}

TEST_F(ApiTest, GivesSessionsTheirDelegates) {
    EXPECT_EQ([Api sessionDelegate], nil);
    [Api setSessionDelegate:delegate];
    EXPECT_EQ([Api sessionDelegate], delegate);
    EXPECT_EQ([Api session:SessionTypeAuthenticated].delegate, delegate);
    HostDelegate *other = [[HostDelegate new] autorelease];
    EXPECT_EQ([Api session:SessionTypeAuthenticated delegate:other].delegate, other);
    EXPECT_EQ([Api session:SessionTypeAuthenticated delegate:nil].delegate, nil);
}

TEST_F(ApiTest, KeepsItsDelegate) {
    BOOL gone = NO;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    HostDelegate *own = [HostDelegate new];
    own->gone = &gone;
    [Api setSessionDelegate:own];
    [own release];
    [pool drain];
    EXPECT_FALSE(gone);
    pool = [NSAutoreleasePool new];
    EXPECT_EQ([Api session:SessionTypeAuthenticated].delegate, own);
    [Api setSessionDelegate:nil];
    [pool drain];
    EXPECT_TRUE(gone);
    EXPECT_EQ([Api session:SessionTypeAuthenticated].delegate, nil);
}

TEST_F(ApiTest, PlainInitialiserIsNotOffered) {
    EXPECT_DEATH([[Api alloc] init], "unimplemented initialiser init\\(\\) of class KeloAPI.Api");
}
