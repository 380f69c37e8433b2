// What a host's code raises inside a call of the library arrives, whole, where the host catches it.
#import "Host.h"

#include <unistd.h>

/// A delegate that raises when it is asked for the host, and lacks most of what is required.
@interface HalfDelegate : NSObject
@end

@implementation HalfDelegate
- (NSString *)hostForSession:(Session *)session {
    [NSException raise:NSRangeException format:@"no host for %d", session.sessionType];
    return nil;
}
- (NSString *)schemaForSession:(Session *)session {
    (void)session;
    @throw [[@"not an exception at all" mutableCopy] autorelease];
}
@end

@interface RaisingTimeline : TimelineEndpoint
@end

@implementation RaisingTimeline
- (NSDictionary *)headerFields {
    [NSException raise:NSRangeException format:@"no fields for %@", self.path];
    return nil;
}
@end

@interface RaisingRequest : Endpoint
@end

@implementation RaisingRequest
- (NSMutableURLRequest *)URLRequest {
    [NSException raise:NSRangeException format:@"no request for %@", self.path];
    return nil;
}
@end

@interface RaisingLike : LikeActionEndpoint
@end

@implementation RaisingLike
- (void)setPathForOn:(BOOL)on {
    [NSException raise:NSRangeException format:@"no path for %d", on];
}
@end

@interface RaisingTarget : NSObject
- (void)heard;
- (void)heard:(id)object;
@end

@implementation RaisingTarget
- (void)heard {
    [NSException raise:NSRangeException format:@"heard of %@", @"a retry"];
}
- (void)heard:(id)object {
    [NSException raise:NSRangeException format:@"heard of %@", [object class]];
}
@end

/// Checks that what is caught is an exception of that name whose text has those words in it.
static void checkCaught(NSException *caught, NSString *name, NSString *words) {
    CHECK(caught != nil);
    CHECK([[caught name] isEqual:name]);
    CHECK([[caught reason] rangeOfString:words].location != NSNotFound);
}

/// The reason and the object have been made in the pool that ends on the way.
#define CHECK_RAISES(call, name, words)                                                            \
    do {                                                                                           \
        NSException *caught = nil;                                                                 \
        @try {                                                                                     \
            call;                                                                                  \
        } @catch (NSException * exception) {                                                       \
            caught = exception;                                                                    \
        }                                                                                          \
        checkCaught(caught, name, words);                                                          \
    } while (0)

static Session *askingSession(id delegate) {
    Session *session =
        [[[Session alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    session.delegate = delegate;
    return session;
}

static void delegate(void) {
    HalfDelegate *half = [[HalfDelegate new] autorelease];
    Session *session = askingSession(half);
    CHECK_RAISES([session host], NSRangeException, @"no host for 1");
    id thrown = nil;
    @try {
        [session schema];
    } @catch (id object) {
        thrown = object;
    }
    CHECK([thrown isEqual:@"not an exception at all"]);
}

static void missingMethod(void) {
    HalfDelegate *half = [[HalfDelegate new] autorelease];
    Session *session = askingSession(half);
    CHECK_RAISES([session userAgent], NSInvalidArgumentException, @"HalfDelegate");
    CHECK_RAISES([session userAgent], NSInvalidArgumentException, @"userAgentForSession:");
    CHECK_RAISES([session polling], NSInvalidArgumentException, @"HalfDelegate");
    CHECK_RAISES([session polling], NSInvalidArgumentException, @"isPollingForSession:");
    CHECK_RAISES([session endpointRequiresAuth:nil retryTarget:nil action:NULL],
                 NSInvalidArgumentException, @"reauthRequiredForSession:");
    CHECK_RAISES([session endpointRequiresCaptcha:nil
                                       captchaUrl:[NSURL URLWithString:@"https://h/c"]
                                      retryTarget:nil
                                           action:NULL],
                 NSInvalidArgumentException, @"shouldHandleCaptchaForSession:captchaUrl:");
}

static void overrides(void) {
    RaisingTimeline *timeline =
        [[[RaisingTimeline alloc] initWithSession:askingSession(nil)] autorelease];
    timeline.path = @"feed";
    CHECK_RAISES([timeline requestWithTarget:nil action:NULL], NSRangeException,
                 @"no fields for feed");
    RaisingRequest *request =
        [[[RaisingRequest alloc] initWithSession:askingSession(nil)] autorelease];
    request.path = @"elsewhere";
    CHECK_RAISES([request requestWithTarget:nil action:NULL], NSRangeException,
                 @"no request for elsewhere");
    KLWatchPost *post = [[KLWatchPost new] autorelease];
    post.postId = @"7";
    RaisingLike *like = [[[RaisingLike alloc] initWithPost:post] autorelease];
    CHECK_RAISES([like toggleOn:YES target:nil action:NULL], NSRangeException, @"no path for 1");
}

static void cachedFile(void) {
    NSString *folder =
        [NSString stringWithFormat:@"%@/kelo-host-%d/", NSTemporaryDirectory(), (int)getpid()];
    NSString *file = [folder stringByAppendingString:@"v.mp4"];
    NSFileManager *files = [NSFileManager defaultManager];
    CHECK([files createDirectoryAtPath:folder attributes:nil]);
    CHECK([@"video" writeToFile:file atomically:NO]);
    FileManager *manager = [FileManager sharedGroupManager:@"/exceptions/"];
    manager.documentsDirectory = folder;
    FileEndpoint *endpoint = [[[FileEndpoint alloc] initWithPath:@"https://media.example/v.mp4"
                                                     fileManager:manager] autorelease];
    RaisingTarget *target = [[RaisingTarget new] autorelease];
    CHECK_RAISES([endpoint downloadTo:[NSURL fileURLWithPath:file]
                               target:target
                               action:@selector(heard:)],
                 NSRangeException, @"heard of FileDownloadResult");
    [manager kill];
    CHECK([files removeFileAtPath:folder handler:nil]);
}

static void releasedRetry(void) {
    Session *session = askingSession(nil);
    RaisingTarget *target = [[RaisingTarget new] autorelease];
    [session endpointRequiresAuth:nil retryTarget:target action:@selector(heard)];
    CHECK_RAISES([session handleQueuedRetriesWithShouldRetry:YES], NSRangeException,
                 @"heard of a retry");
    [session handleQueuedRetriesWithShouldRetry:YES]; // the session goes on
}

const HostCase exceptionCases[] = {
    {"delegate", delegate},      {"missing-method", missingMethod}, {"overrides", overrides},
    {"cached-file", cachedFile}, {"released-retry", releasedRetry}, {NULL, NULL},
};
