// Signs in, prints the captions of a feed's first two pages and downloads the first post's video
// into the folder that is given. The run loop of the main thread serves the library's main queue.
#import "ExampleDelegate.h"

#include <stdio.h>

static const NSUInteger pageCount = 2;

@interface Feed : NSObject {
@private
    ExampleDelegate *_delegate;
    NSString *_folder;
    NSMutableArray *_posts;
    NSUInteger _pages;
    BOOL _done;
    int _exitCode;
}
- (instancetype)initWithFolder:(NSString *)folder;
- (int)run;
@end

@interface Feed ()
- (void)fail:(NSString *)why;
- (void)signIn;
- (void)download;
@end

@implementation Feed

- (instancetype)initWithFolder:(NSString *)folder {
    self = [super init];
    if (self != nil) {
        _delegate = [ExampleDelegate new];
        _folder = [folder copy];
        _posts = [NSMutableArray new];
    }
    return self;
}

- (void)dealloc {
    [_delegate release];
    [_folder release];
    [_posts release];
    [super dealloc];
}

- (int)run {
    [Diagnostics setSinkTarget:self action:@selector(trace:)];
    [MainQueue addToRunLoop:[NSRunLoop mainRunLoop] forMode:NSDefaultRunLoopMode];
    [Api setSessionDelegate:_delegate];
    NSString *obstacle = pinCertificate();
    if (obstacle != nil) {
        [self fail:obstacle];
    } else {
        [self signIn];
    }
    while (!_done) {
        NSAutoreleasePool *pool = [NSAutoreleasePool new];
        [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate distantFuture]];
        [pool drain];
    }
    [MainQueue removeFromRunLoop:[NSRunLoop mainRunLoop] forMode:NSDefaultRunLoopMode];
    [Diagnostics setSinkTarget:nil action:NULL];
    return _exitCode;
}

- (void)trace:(NSString *)line {
    fprintf(stderr, "%s\n", [line UTF8String]);
}

- (void)fail:(NSString *)why {
    fprintf(stderr, "%s\n", [why UTF8String]);
    _exitCode = 1;
    _done = YES;
}

// Signing in has no endpoint of its own: any call of the service can be made so.
- (void)signIn {
    Session *session = [Api session:SessionTypeUnAuthenticated];
    Endpoint *endpoint = [[[Endpoint alloc] initWithSession:session] autorelease];
    endpoint.path = @"sessions";
    endpoint.method = @"POST";
    endpoint.parameterEncoding = ParameterEncodingJSON;
    endpoint.parameters = [NSDictionary
        dictionaryWithObjectsAndKeys:fromEnvironment(@"KELO_USER", @"mara"), @"username",
                                     fromEnvironment(@"KELO_PASSWORD", @"loop-the-loop"),
                                     @"password", nil];
    [endpoint requestWithTarget:self action:@selector(signedIn:error:)];
}

- (void)signedIn:(NSString *)text error:(NSError *)error {
    if (error != nil) {
        [self fail:[error localizedDescription]];
        return;
    }
    NSDictionary *answer =
        [NSJSONSerialization JSONObjectWithData:[text dataUsingEncoding:NSUTF8StringEncoding]
                                        options:0
                                          error:NULL];
    id data = [answer isKindOfClass:[NSDictionary class]] ? [answer objectForKey:@"data"] : nil;
    NSString *key = [data isKindOfClass:[NSDictionary class]] ? [data objectForKey:@"key"] : nil;
    if (![key isKindOfClass:[NSString class]]) {
        [self fail:@"The service gave no session."];
        return;
    }
    _delegate.sessionKey = key;
    [[[MeEndpoint new] autorelease] getWithTarget:self action:@selector(knowsUser:)];
}

- (void)knowsUser:(MeResult *)result {
    if (!result.success) {
        [self fail:[result.error localizedDescription]];
        return;
    }
    printf("Signed in as %s\n", [result.user.username UTF8String]);
    TimelineEndpoint *feed = [[[TimelineEndpoint alloc] initWithPath:@"popular"] autorelease];
    [feed fetchWithTarget:self action:@selector(fetched:)];
}

- (void)fetched:(TimelineResult *)page {
    if (!page.success) {
        [self fail:[page.error localizedDescription]];
        return;
    }
    for (KLWatchPost *post in page.posts) {
        printf("%s\n", post.caption == nil ? "" : [post.caption UTF8String]);
    }
    [_posts addObjectsFromArray:page.posts];
    if (++_pages < pageCount && page.nextPage != nil) {
        [page.nextPage fetchWithTarget:self action:@selector(fetched:)];
    } else {
        [self download];
    }
}

- (void)download {
    NSString *address = nil;
    for (KLWatchPost *post in _posts) {
        if (address == nil) {
            address = post.videoUrl;
        }
    }
    if (address == nil) {
        [self fail:@"No post has a video."];
        return;
    }
    FileManager *cache = [FileManager sharedGroupManager:@"/example-objc/"];
    cache.documentsDirectory = [_folder stringByAppendingString:@"/"];
    FileEndpoint *video = [[[FileEndpoint alloc] initWithPath:address
                                                  fileManager:cache] autorelease];
    [[FileQueue withKey:@"videos"] download:video
                                         to:[video documentsFile]
                                   priority:QueuePriorityHigh
                                     target:self
                                     action:@selector(downloaded:)];
}

- (void)downloaded:(FileDownloadResult *)result {
    if (!result.success) {
        [self fail:[result.error localizedDescription]];
        return;
    }
    NSString *path = [[result.endpoint localUrl] path];
    NSData *video = [NSData dataWithContentsOfFile:path];
    if (video == nil) {
        [self fail:[path stringByAppendingString:@" cannot be read."]];
        return;
    }
    printf("%s: %lu bytes\n", [[path lastPathComponent] UTF8String], (unsigned long)[video length]);
    _done = YES;
}

@end

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "Usage: example-objc-feed FOLDER\n");
        return 2;
    }
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    Feed *feed = [[Feed alloc] initWithFolder:[NSString stringWithUTF8String:argv[1]]];
    const int exitCode = [feed run];
    [feed release];
    [pool drain];
    return exitCode;
}
