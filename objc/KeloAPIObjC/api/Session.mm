#import <KeloAPIObjC/api/Session.h>

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>
#include <KeloAPIObjC/bridge/Completion.hpp>
#include <KeloAPIObjC/bridge/Delegates.hpp>
#include <KeloAPIObjC/bridge/Making.hpp>
#include <KeloAPIObjC/bridge/Required.hpp>
#include <KeloAPIObjC/bridge/RuntimeName.hpp>
#include <KeloAPIObjC/bridge/SessionTypes.hpp>
#include <KeloAPIObjC/bridge/Values.hpp>

using namespace KeloBridge;
using Native = KeloAPI::Session;

namespace {

/// Empty where nothing would hear of it.
KeloAPI::EndpointRetry retryOf(const Completion &heard) {
    if (!heard) {
        return nullptr;
    }
    return [heard] {
        const Pool pool;
        heard();
    };
}

void requireAuth(Session *session, Endpoint *endpoint, const Completion &retry) {
    held<Native>(session).endpointRequiresAuth(shared<KeloAPI::Endpoint>(endpoint), retryOf(retry));
}

void requireCaptcha(Session *session, Endpoint *endpoint, NSURL *captchaUrl,
                    const Completion &retry) {
    held<Native>(session).endpointRequiresCaptcha(shared<KeloAPI::Endpoint>(endpoint),
                                                  requiredURL(captchaUrl), retryOf(retry));
}

} // namespace

@implementation Session

+ (void)load {
    add<Native>(self);
    nameAtRuntime(self, "KeloAPI.Session");
}

+ (BOOL)certificatePinningEnabled {
    return Native::certificatePinningEnabled;
}

- (instancetype)initWithSessionType:(SessionType)sessionType {
    self = [super init];
    return self == nil
               ? nil
               : holdMade(self, [=] { return std::make_shared<Native>(nativeType(sessionType)); });
}

- (instancetype)init {
    unimplemented("init()", "KeloAPI.Session");
}

- (SessionType)sessionType {
    return static_cast<SessionType>(held<Native>(self).sessionType());
}

- (id<SessionDelegate>)delegate {
    return sessionDelegate(held<Native>(self).delegate());
}

- (void)setDelegate:(id<SessionDelegate>)delegate {
    held<Native>(self).setDelegate(sessionDelegate(delegate));
}

- (NSString *)host {
    return string(held<Native>(self).host());
}

- (NSString *)schema {
    return string(held<Native>(self).schema());
}

- (NSString *)sessionId {
    return string(held<Native>(self).sessionId());
}

- (NSString *)acceptLanguage {
    return string(held<Native>(self).acceptLanguage());
}

- (NSString *)userAgent {
    return string(held<Native>(self).userAgent());
}

- (NSString *)keloClient {
    return string(held<Native>(self).keloClient());
}

- (BOOL)polling {
    return held<Native>(self).polling();
}

- (void)handleQueuedRetriesWithShouldRetry:(BOOL)shouldRetry {
    held<Native>(self).handleQueuedRetries(shouldRetry);
}

- (void)endpointRequiresAuth:(Endpoint *)endpoint retryTarget:(id)target action:(SEL)action {
    requireAuth(self, endpoint, Completion(target, action));
}

- (void)endpointRequiresAuth:(Endpoint *)endpoint retry:(KELO_BLOCK(void))retry {
    requireAuth(self, endpoint, Completion(retry));
}

- (void)endpointRequiresCaptcha:(Endpoint *)endpoint
                     captchaUrl:(NSURL *)captchaUrl
                    retryTarget:(id)target
                         action:(SEL)action {
    requireCaptcha(self, endpoint, captchaUrl, Completion(target, action));
}

- (void)endpointRequiresCaptcha:(Endpoint *)endpoint
                     captchaUrl:(NSURL *)captchaUrl
                          retry:(KELO_BLOCK(void))retry {
    requireCaptcha(self, endpoint, captchaUrl, Completion(retry));
}

@end
