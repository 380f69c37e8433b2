#import "HostDelegate.h"

@implementation HostDelegate

- (void)dealloc {
    if (gone != NULL) {
        *gone = YES;
    }
    [captchaUrl release];
    [super dealloc];
}

- (NSString *)hostForSession:(Session *)session {
    asking = session;
    return host;
}

- (NSString *)schemaForSession:(Session *)session {
    asking = session;
    return schema;
}

- (NSString *)sessionKeyForSession:(Session *)session {
    asking = session;
    return sessionKey;
}

- (NSString *)acceptLanguageForSession:(Session *)session {
    asking = session;
    return acceptLanguage;
}

- (NSString *)userAgentForSession:(Session *)session {
    asking = session;
    return userAgent;
}

- (NSString *)keloClientForSession:(Session *)session {
    asking = session;
    return keloClient;
}

- (BOOL)isPollingForSession:(Session *)session {
    asking = session;
    return polling;
}

- (void)reauthRequiredForSession:(Session *)session {
    asking = session;
    ++reauthCount;
}

- (BOOL)shouldHandleCaptchaForSession:(Session *)session captchaUrl:(NSURL *)url {
    asking = session;
    [captchaUrl autorelease];
    captchaUrl = [url retain];
    return handlesCaptcha;
}

@end

static int releaseCount = 0;

@implementation CountingDelegate

- (oneway void)release {
    ++releaseCount;
    [super release];
}

+ (int)releases {
    return releaseCount;
}

@end
