#import "ExampleDelegate.h"

#include <arpa/inet.h>

NSString *fromEnvironment(NSString *name, NSString *otherwise) {
    NSString *value = [[[NSProcessInfo processInfo] environment] objectForKey:name];
    return value != nil ? value : otherwise;
}

/// Whether HOST or HOST:PORT is a name of this machine's loopback address.
static BOOL isThisMachine(NSString *host) {
    NSRange port = [host rangeOfString:@":" options:NSBackwardsSearch];
    BOOL hasPort = port.location != NSNotFound && ![host hasSuffix:@"]"];
    NSString *name = hasPort ? [host substringToIndex:port.location] : host;
    struct in_addr address;
    return [name isEqualToString:@"localhost"] || [name isEqualToString:@"[::1]"] ||
           ([name hasPrefix:@"127."] && inet_pton(AF_INET, [name UTF8String], &address) == 1);
}

/// Where `kelo serve` keeps the certificate that it makes for itself.
static NSString *servedCertificate(void) {
    NSString *folder = fromEnvironment(@"XDG_STATE_HOME", @"");
    if (![folder hasPrefix:@"/"]) {
        folder = [fromEnvironment(@"HOME", @"") stringByAppendingString:@"/.local/state"];
    }
    return [folder stringByAppendingString:@"/kelo-service/certificate.pem"];
}

static NSString *host(void) {
    return fromEnvironment(@"KELO_HOST", @"localhost:8443");
}

NSString *pinCertificate(void) {
    NSString *pin = fromEnvironment(@"KELO_PIN", @"");
    BOOL isNamed = [pin length] != 0;
    if (!isNamed && !isThisMachine(host())) {
        return nil;
    }
    NSData *certificate = [NSData dataWithContentsOfFile:isNamed ? pin : servedCertificate()];
    if (certificate != nil) {
        NSArray *certificates = [NSArray arrayWithObject:certificate];
        [[Api session:SessionTypeAuthenticated] pinCertificates:certificates];
        [[Api session:SessionTypeUnAuthenticated] pinCertificates:certificates];
    }
    return certificate == nil && isNamed ? [@"KELO_PIN: cannot read " stringByAppendingString:pin]
                                         : nil;
}

@implementation ExampleDelegate

@synthesize sessionKey = _sessionKey;

- (void)dealloc {
    [_sessionKey release];
    [super dealloc];
}

- (NSString *)hostForSession:(Session *)session {
    return host();
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
