// A host whose compiler has blocks. Each is on the stack when it is given, because it captures what
// it writes into, and its function has returned when it is called.
#import <KeloAPIObjC/KeloAPIObjC.h>

#include <arpa/inet.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

static int failures = 0;

static void check(BOOL holds, const char *what) {
    if (!holds) {
        fprintf(stderr, "not so: %s\n", what);
        failures++;
    }
}

#define CHECK(...) check((__VA_ARGS__), #__VA_ARGS__)

static const char response[] = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
                               "Content-Length: 12\r\nConnection: close\r\n\r\n{\"data\": {}}";

/// Answers each connection with the response, once its request has come.
static void *serve(void *listening) {
    for (;;) {
        const int connection = accept(*(int *)listening, NULL, NULL);
        if (connection < 0) {
            return NULL;
        }
        char request[4096] = "";
        size_t length = 0;
        ssize_t count = 1;
        while (count > 0 && strstr(request, "\r\n\r\n") == NULL && length + 1 < sizeof request) {
            count = recv(connection, request + length, sizeof request - 1 - length, 0);
            length += count > 0 ? (size_t)count : 0;
            request[length] = '\0';
        }
        send(connection, response, sizeof response - 1, MSG_NOSIGNAL);
        close(connection);
    }
}

/// The address of a server on the loopback; `listening` stays open.
static NSString *startServer(int *listening) {
    struct sockaddr_in address = {.sin_family = AF_INET};
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    *listening = socket(AF_INET, SOCK_STREAM, 0);
    pthread_t thread;
    if (bind(*listening, (struct sockaddr *)&address, length) != 0 || listen(*listening, 8) != 0 ||
        getsockname(*listening, (struct sockaddr *)&address, &length) != 0 ||
        pthread_create(&thread, NULL, serve, listening) != 0) {
        perror("server");
        return nil;
    }
    pthread_detach(thread);
    return [NSString stringWithFormat:@"http://127.0.0.1:%d/x", ntohs(address.sin_port)];
}

/// Runs the main queue until a block stops it.
static void run(void) {
    [MainQueue runUntilDate:[NSDate dateWithTimeIntervalSinceNow:30]];
}

static Endpoint *endpointTo(NSString *address) {
    Session *session =
        [[[Session alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    Endpoint *endpoint = [[[Endpoint alloc] initWithSession:session] autorelease];
    endpoint.path = address;
    return endpoint;
}

static id<EndpointRequest> ask(Endpoint *endpoint, NSMutableDictionary *heard) {
    id<EndpointRequest> request =
        [endpoint requestWithCompletionHandler:^(NSString *text, NSError *error) {
          [heard setObject:text forKey:@"text"];
          [MainQueue stop];
        }];
    request.progressHandler = ^(id<EndpointRequest> one, double done) {
      [heard setObject:one forKey:@"request"];
      [heard setObject:[NSNumber numberWithDouble:done] forKey:@"fraction"];
    };
    return request;
}

static void testCalls(NSString *address) {
    NSMutableDictionary *heard = [NSMutableDictionary dictionary];
    id<EndpointRequest> request = ask(endpointTo(address), heard);
    CHECK(request.progressHandler != nil);
    run();
    CHECK([[heard objectForKey:@"text"] isEqual:@"{\"data\": {}}"]);
    CHECK([[heard objectForKey:@"fraction"] doubleValue] == 1);
    CHECK([heard objectForKey:@"request"] == request);
}

static void download(Endpoint *endpoint, NSURL *destination, NSMutableDictionary *heard) {
    [endpoint setDownloadProgressHandler:^(int64_t bytes, int64_t total, int64_t expected) {
      [heard setObject:[NSNumber numberWithLongLong:total] forKey:@"total"];
      [heard setObject:[NSNumber numberWithLongLong:expected] forKey:@"expected"];
    }];
    [endpoint downloadWithDestinationUrl:destination
                       completionHandler:^(NSURL *url, NSError *error) {
                         [heard setObject:[url path] forKey:@"path"];
                         [MainQueue stop];
                       }];
}

static void testDownloads(NSString *address, NSString *folder) {
    NSMutableDictionary *heard = [NSMutableDictionary dictionary];
    NSString *name = [NSString stringWithFormat:@"kelo-objc-blocks-%d", (int)getpid()];
    NSString *path = [folder stringByAppendingPathComponent:name];
    download(endpointTo(address), [NSURL fileURLWithPath:path], heard);
    run();
    CHECK([[heard objectForKey:@"path"] isEqual:path]);
    CHECK([[heard objectForKey:@"total"] longLongValue] == 12);
    CHECK([[heard objectForKey:@"expected"] longLongValue] == 12);
    CHECK([[NSData dataWithContentsOfFile:path] length] == 12);
    CHECK(unlink([path fileSystemRepresentation]) == 0);
}

static void giveHandler(AlamofireEndpointRequest *request, NSMutableArray *heard) {
    request.progressHandler = ^(id<EndpointRequest> one, double done) {
      [heard addObject:[NSNumber numberWithDouble:done]];
    };
}

/// A block is read back as it was given, and a nil one takes it away.
static void testHandles(void) {
    NSMutableArray *heard = [NSMutableArray array];
    AlamofireEndpointRequest *request = [[AlamofireEndpointRequest new] autorelease];
    giveHandler(request, heard);
    request.progressHandler(request, 0.25);
    CHECK([[heard lastObject] doubleValue] == 0.25);
    request.progressHandler = nil;
    CHECK(request.progressHandler == nil);
}

static void giveRetry(Session *session, NSMutableArray *heard) {
    [session endpointRequiresAuth:nil
                            retry:^{
                              [heard addObject:@"again"];
                            }];
}

static void testRetries(void) {
    NSMutableArray *heard = [NSMutableArray array];
    Session *session =
        [[[Session alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    giveRetry(session, heard);
    [session handleQueuedRetriesWithShouldRetry:YES];
    CHECK([heard count] == 1);
}

static void takeLines(NSMutableArray *heard) {
    [Diagnostics setSink:^(NSString *line) {
      [heard addObject:line];
    }];
}

/// What a manager cannot clear goes to the sink, on this thread.
static void testDiagnostics(void) {
    NSMutableArray *heard = [NSMutableArray array];
    takeLines(heard);
    FileManager *manager = [FileManager sharedGroupManager:@"/none/"];
    manager.documentsDirectory = @"/dev/null/";
    [manager cleanDirectory:0];
    [Diagnostics setSink:nil];
    CHECK([heard count] == 1);
}

int main(void) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    int listening = -1;
    NSString *address = startServer(&listening);
    CHECK(address != nil);
    testDiagnostics();
    testHandles();
    testRetries();
    testCalls(address);
    testDownloads(address, NSTemporaryDirectory());
    [pool drain];
    if (failures == 0) {
        puts("every block was heard");
    }
    return failures == 0 ? 0 : 1;
}
