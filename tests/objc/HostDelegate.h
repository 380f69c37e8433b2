#import <KeloAPIObjC/KeloAPIObjC.h>

/// A delegate that answers what its fields say and notes what it hears.
@interface HostDelegate : NSObject <SessionDelegate> {
@public
    NSString *host;
    NSString *schema;
    NSString *sessionKey;
    NSString *acceptLanguage;
    NSString *userAgent;
    NSString *keloClient;
    BOOL polling;
    BOOL handlesCaptcha;
    int reauthCount;
    NSURL *captchaUrl;
    Session *asking;
    BOOL *gone;
}
@end

/// One that has its own idea of when it goes, as some frameworks' objects do.
@interface CountingDelegate : HostDelegate
+ (int)releases;
@end
