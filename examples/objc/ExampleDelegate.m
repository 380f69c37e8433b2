#import "ExampleDelegate.h"

NSString *fromEnvironment(NSString *name, NSString *otherwise) {
    NSString *value = [[[NSProcessInfo processInfo] environment] objectForKey:name];
    return value != nil ? value : otherwise;
}

void pinCertificate(void) {
    NSString *home = fromEnvironment(@"HOME", @"");
    NSString *state =
        fromEnvironment(@"XDG_STATE_HOME", [home stringByAppendingPathComponent:@".local/state"]);
    NSString *own = [state stringByAppendingPathComponent:@"kelo-service/certificate.pem"];
    NSData *certificate = [NSData dataWithContentsOfFile:fromEnvironment(@"KELO_PIN", own)];
    if (certificate != nil) {
        NSArray *certificates = [NSArray arrayWithObject:certificate];
        [[Api session:SessionTypeAuthenticated] pinCertificates:certificates];
        [[Api session:SessionTypeUnAuthenticated] pinCertificates:certificates];
    }
}

@implementation ExampleDelegate

@synthesize sessionKey = _sessionKey;

- (void)dealloc {
    [_sessionKey release];
    [super dealloc];
}

- (NSString *)hostForSession:(Session *)session {
    return fromEnvironment(@"KELO_HOST", @"localhost:8443");
}

- (NSString *)schemaForSession:(Session *)session {
    return nil;
}

- (NSString *)sessionKeyForSession:(Session *)session {
    return self.sessionKey;
}

- (NSString *)acceptLanguageForSession:(Session *)session {
    return @"en-US";
}

- (NSString *)userAgentForSession:(Session *)session {
    return @"example-objc/1.0";
}

- (NSString *)keloClientForSession:(Session *)session {
    return nil;
}

- (BOOL)isPollingForSession:(Session *)session {
    return NO;
}

- (void)reauthRequiredForSession:(Session *)session {
}

- (BOOL)shouldHandleCaptchaForSession:(Session *)session captchaUrl:(NSURL *)captchaUrl {
    return NO; // nobody is there to solve it
}

@end
