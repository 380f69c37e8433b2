#import <KeloAPIObjC/api/Api.h>
#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPIObjC/bridge/Calls.hpp>
#include <KeloAPIObjC/bridge/Delegates.hpp>
#include <KeloAPIObjC/bridge/RuntimeName.hpp>
#include <KeloAPIObjC/bridge/Table.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Session;

namespace {

/// Keeps alive what the C++ registry holds a delegate for.
id<SessionDelegate> heldDelegate = nil;

/// A number that is no type raises `NSInvalidArgumentException`.
KeloAPI::SessionType nativeType(SessionType type) {
    return requiredCase<KeloAPI::SessionType>(type, SessionTypeUnAuthenticated, @"session type");
}

void requireAuth(Native &session, Endpoint *endpoint, const Completion &retry) {
    session.endpointRequiresAuth(toNative<KeloAPI::Endpoint>(endpoint),
                                 tellingIfHeard<KeloAPI::EndpointRetry>(retry));
}

void requireCaptcha(Native &session, Endpoint *endpoint, NSURL *captchaUrl,
                    const Completion &retry) {
    session.endpointRequiresCaptcha(toNative<KeloAPI::Endpoint>(endpoint),
                                    requiredURL(captchaUrl, @"captchaUrl"),
                                    tellingIfHeard<KeloAPI::EndpointRetry>(retry));
}

/// PEM or DER.
KeloAPI::Certificate requiredCertificate(NSData *data) {
    const std::string bytes(static_cast<const char *>([data bytes]), [data length]);
    auto certificate = KeloAPI::Certificate::fromPEM(bytes);
    if (!certificate) {
        certificate = KeloAPI::Certificate::fromDER(KeloAPI::Data(bytes));
    }
    if (!certificate) {
        [NSException raise:NSInvalidArgumentException format:@"not a certificate"];
    }
    return *certificate;
}

} // namespace

@implementation Session

KELO_STANDS_FOR(Session, Native, nameAtRuntime(self, "KeloAPI.Session"))
KELO_NO_INIT()
KELO_READS(SessionType, sessionType)
KELO_READS(NSString *, host, schema, sessionId, acceptLanguage, userAgent, keloClient)
KELO_READS(BOOL, polling)
KELO_CALLS(void, (endpointRequiresAuth, Endpoint *, endpoint), retryTarget, retry,
           requireAuth(native(self), endpoint, heard))
KELO_CALLS(void, (endpointRequiresCaptcha, Endpoint *, endpoint, captchaUrl, NSURL *, captchaUrl),
           retryTarget, retry, requireCaptcha(native(self), endpoint, captchaUrl, heard))

+ (BOOL)certificatePinningEnabled {
    return Native::certificatePinningEnabled;
}

- (instancetype)initWithSessionType:(SessionType)sessionType {
    return adoptMade(self, [=] {
        return std::shared_ptr<Native>(new Native(nativeType(sessionType)), Parting<Native>());
    });
}

- (id<SessionDelegate>)delegate {
    return sessionDelegate(native(self).delegate());
}

- (void)setDelegate:(id<SessionDelegate>)delegate {
    native(self).setDelegate(sessionDelegate(delegate));
}

- (void)pinCertificates:(NSArray *)certificates {
    requireArgument(certificates, @"certificates");
    KeloAPI::PinCertificates pins;
    for (NSUInteger index = 0; index < [certificates count]; ++index) {
        pins.certificates.push_back(requiredCertificate([certificates objectAtIndex:index]));
    }
    Native &session = native(self);
    const KeloAPI::ServerTrustPolicyManager trust({{session.host(), std::move(pins)}});
    session.setSessionManager(std::make_shared<KeloAPI::Manager>(trust));
}

- (void)handleQueuedRetriesWithShouldRetry:(BOOL)shouldRetry {
    native(self).handleQueuedRetries(shouldRetry);
}

@end

@implementation Api

- (instancetype)init {
    unimplemented("init()", "KeloAPI.Api");
}

+ (Session *)session:(SessionType)type {
    return toObjC(KeloAPI::Api::session(nativeType(type)));
}

+ (Session *)session:(SessionType)type delegate:(id<SessionDelegate>)delegate {
    return toObjC(KeloAPI::Api::session(nativeType(type), sessionDelegate(delegate)));
}

+ (id<SessionDelegate>)sessionDelegate {
    return sessionDelegate(KeloAPI::Api::sessionDelegate());
}

+ (void)setSessionDelegate:(id<SessionDelegate>)delegate {
    KeloAPI::Api::setSessionDelegate(sessionDelegate(delegate));
    id<SessionDelegate> before = heldDelegate;
    heldDelegate = [delegate retain];
    [before release];
}

@end
