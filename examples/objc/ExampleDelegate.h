#import <KeloAPIObjC/KeloAPIObjC.h>

/// The value of an environment variable, or `otherwise`.
NSString *fromEnvironment(NSString *name, NSString *otherwise);
/// Where there is one, the certificate that KELO_PIN names, or that `kelo serve` made on this
/// machine, is accepted in place of those that are built into the library. Gives what is wrong with
/// KELO_PIN, or nil.
NSString *pinCertificate(void);

/// Where the service is comes from the environment; who the user is, once somebody has signed in.
@interface ExampleDelegate : NSObject <SessionDelegate> {
@private
    NSString *_sessionKey;
}

@property(nonatomic, copy) NSString *sessionKey;

@end
