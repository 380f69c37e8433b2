// Uploads a video as one segment, for the user of the session key in KELO_SESSION, and tells how
// much of it is sent.
#import "ExampleDelegate.h"

#include <stdio.h>

@interface Upload : NSObject {
@private
    NSData *_video;
    int _exitCode;
}
- (instancetype)initWithVideo:(NSData *)video;
- (int)run;
@end

@implementation Upload

- (instancetype)initWithVideo:(NSData *)video {
    self = [super init];
    if (self != nil) {
        _video = [video retain];
        _exitCode = 1;
    }
    return self;
}

- (void)dealloc {
    [_video release];
    [super dealloc];
}

- (int)run {
    LongformUploadEndpoint *endpoint = [[LongformUploadEndpoint new] autorelease];
    [endpoint initiateUploadWithTotalBytes:(NSInteger)[_video length]
                                    target:self
                                    action:@selector(begun:error:)];
    [MainQueue run];
    return _exitCode;
}

- (BOOL)endsWith:(NSError *)error {
    if (error == nil) {
        return NO;
    }
    fprintf(stderr, "%s\n", [[error localizedDescription] UTF8String]);
    [MainQueue stop];
    return YES;
}

- (void)begun:(KLVideoUpload *)session error:(NSError *)error {
    if ([self endsWith:error]) {
        return;
    }
    LongformUploadEndpoint *upload = [[LongformUploadEndpoint new] autorelease];
    id<EndpointRequest> request = [upload uploadSegmentWithMediaId:session.mediaId
                                                              data:_video
                                                      segmentIndex:0
                                                            target:self
                                                            action:@selector(sent:)];
    [request setProgressTarget:self action:@selector(request:fraction:)];
}

- (void)request:(id<EndpointRequest>)request fraction:(double)fraction {
    printf("%.0f %%\n", fraction * 100);
}

- (void)sent:(NSError *)error {
    if ([self endsWith:error]) {
        return;
    }
    _exitCode = 0; // what is left is to finalize the upload, and to ask for its status
    [MainQueue stop];
}

@end

int main(int argc, char **argv) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSData *video =
        argc == 2 ? [NSData dataWithContentsOfFile:[NSString stringWithUTF8String:argv[1]]] : nil;
    if (video == nil) {
        fprintf(stderr, "Usage: example-objc-upload FILE.mp4\n");
        return 2;
    }
    ExampleDelegate *delegate = [[ExampleDelegate new] autorelease];
    delegate.sessionKey = fromEnvironment(@"KELO_SESSION", @"kelo-development-session");
    [Api setSessionDelegate:delegate];
    NSString *obstacle = pinCertificate();
    if (obstacle != nil) {
        fprintf(stderr, "%s\n", [obstacle UTF8String]);
        return 1;
    }
    Upload *upload = [[Upload alloc] initWithVideo:video];
    const int exitCode = [upload run];
    [upload release];
    [pool drain];
    return exitCode;
}
