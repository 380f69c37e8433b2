// One Objective-C object for each of the library's, as long as either side holds it.
#import "Host.h"

static NSAutoreleasePool *pool;

static void beginPool(void) {
    pool = [NSAutoreleasePool new];
}

static void endPool(void) {
    [pool drain];
}

static KLWatchPost *newPost(NSString *caption) {
    KLWatchPost *post = [KLWatchPost new];
    post.caption = caption;
    return post;
}

static void property(void) {
    KLWatchPost *post = newPost(@"a");
    KLWatchUser *user = [KLWatchUser new];
    post.user = user;
    [user release];
    user.username = @"cat";
    CHECK(post.user == user);
    CHECK([post.user.username isEqual:@"cat"]);
    post.user = nil;
    [post release];
}

static void element(void) {
    KLPagedData *data = [KLPagedData new];
    KLWatchPost *post = newPost(@"a");
    [data append:post];
    [post release];
    post.caption = @"b";
    CHECK([data objectAtIndex:0] == post);
    beginPool();
    CHECK([[[data objectAtIndex:0] caption] isEqual:@"b"]);
    endPool();
    CHECK([data objectAtIndex:0] == post);
    [post retain];
    [data release];
    CHECK([post.caption isEqual:@"b"]);
    [post release];
}

static void metadataOfAList(void) {
    KLPagedData *data = [KLPagedData new];
    beginPool();
    KLPagingMetadata *metadata = data.metadata;
    endPool();
    metadata.displayCount = 3;
    CHECK(data.metadata == metadata);
    CHECK(data.metadata.displayCount == 3);
    [data release];
}

static void sessionOfAnEndpoint(void) {
    beginPool();
    Session *made = [[[Session alloc] initWithSessionType:SessionTypeAuthenticated] autorelease];
    Endpoint *endpoint = [[Endpoint alloc] initWithSession:made];
    endPool();
    beginPool();
    Session *session = endpoint.session;
    endPool();
    CHECK(session == made);
    CHECK([[session host] length] > 0);
    [endpoint release];
}

static void registry(void) {
    beginPool();
    Session *first = [Api session:SessionTypeUnAuthenticated];
    endPool();
    CHECK([[first host] length] > 0);
    CHECK([Api session:SessionTypeUnAuthenticated] == first);
}

static void managersAndQueues(void) {
    beginPool();
    FileManager *manager = [FileManager sharedGroupManager:@"/ownership/"];
    FileQueue *queue = [FileQueue withKey:@"ownership"];
    endPool();
    manager.documentsDirectory = @"/tmp/";
    CHECK([FileManager sharedGroupManager:@"/ownership/"] == manager);
    CHECK([FileQueue withKey:@"ownership"] == queue);
    CHECK([queue.queuedFiles count] == 0);
    FileEndpoint *endpoint = [[FileEndpoint alloc] initWithPath:@"a" fileManager:manager];
    [manager kill];
    beginPool();
    CHECK(endpoint.fileManager == manager);
    endPool();
    CHECK([endpoint.fileManager.documentsDirectory isEqual:@"/tmp/"]);
    [queue kill];
    [endpoint release];
}

static int endedCount = 0;

/// Has something of its own, and uses its properties to the end.
@interface OwnedPost : KLWatchPost {
@public
    NSMutableString *note;
}
@end

@implementation OwnedPost
- (void)dealloc {
    ++endedCount;
    CHECK([self.caption isEqual:@"mine"]);
    self.user = nil;
    [self retain]; // as a notification does
    [self release];
    [note release];
    [super dealloc];
}
@end

static OwnedPost *newOwnedPost(void) {
    OwnedPost *post = [OwnedPost new];
    post.caption = @"mine";
    post.user = [[KLWatchUser new] autorelease];
    post->note = [[NSMutableString alloc] initWithString:@"note"];
    return post;
}

static void hostsClass(void) {
    endedCount = 0;
    KLPagedData *data = [KLPagedData new];
    beginPool();
    OwnedPost *post = newOwnedPost();
    [data append:post];
    [post release];
    endPool();
    CHECK(endedCount == 0);
    beginPool();
    CHECK([data objectAtIndex:0] == post);
    CHECK([((OwnedPost *)[data objectAtIndex:0])->note isEqual:@"note"]);
    endPool();
    [data release];
    CHECK(endedCount == 1);
    [newOwnedPost() release];
    CHECK(endedCount == 2);
}

static int endpointsEnded = 0;

@interface OwnedTimeline : TimelineEndpoint
@end

@implementation OwnedTimeline
- (void)dealloc {
    ++endpointsEnded;
    CHECK([self.path length] > 0);
    [super dealloc];
}
@end

@interface OwnedSession : Session
@end

@implementation OwnedSession
- (void)dealloc {
    ++endpointsEnded;
    CHECK(self.sessionType == SessionTypeUnAuthenticated);
    [super dealloc];
}
@end

static void hostsEndpoint(void) {
    endpointsEnded = 0;
    beginPool();
    OwnedSession *session =
        [[[OwnedSession alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
    OwnedTimeline *timeline = [[OwnedTimeline alloc] initWithSession:session];
    timeline.path = @"a";
    endPool();
    CHECK([timeline.session isMemberOfClass:[OwnedSession class]]);
    CHECK(endpointsEnded == 0);
    [timeline release];
    CHECK(endpointsEnded == 1);
}

static void weakPost(void) {
    KLWatchPost *post = newPost(@"a");
    beginPool();
    LikeActionEndpoint *like = [[LikeActionEndpoint alloc] initWithPost:post];
    CHECK(like.post == post);
    endPool();
    [post release];
    CHECK(like.post == nil);
    [like release];
}

static int visited = 0;

static void enumeration(void) {
    KLPagedData *data = [KLPagedData new];
    for (int i = 0; i < 40; ++i) {
        [data append:[newPost(@"a") autorelease]];
    }
    NSAutoreleasePool *inner = [NSAutoreleasePool new];
    visited = 0;
    for (KLWatchPost *post in data) {
        CHECK([post.caption isEqual:@"a"]);
        ++visited;
        [data removeAtIndex:0];
        [inner drain];
        inner = [NSAutoreleasePool new];
    }
    [inner drain];
    CHECK(visited == 40);
    CHECK(data.count == 0);
    [data release];
}

/// Counts the elements, by a loop over the list in each round of another that is left early.
static void enumerationsInEachOther(void) {
    KLPagedData *data =
        [[KLPagedData alloc] initWithData:[NSArray arrayWithObjects:@"a", @"b", @"c", nil]];
    visited = 0;
    for (int round = 0; round < 3; ++round) {
        for (NSString *outer in data) {
            for (NSString *inner in data) {
                visited += [inner length];
            }
            if ([outer isEqual:@"b"]) {
                break;
            }
        }
    }
    CHECK(visited == 18);
    [data release];
}

const HostCase ownershipCases[] = {
    {"property", property},
    {"element", element},
    {"metadata-of-a-list", metadataOfAList},
    {"session-of-an-endpoint", sessionOfAnEndpoint},
    {"registry", registry},
    {"managers-and-queues", managersAndQueues},
    {"hosts-class", hostsClass},
    {"hosts-endpoint", hostsEndpoint},
    {"weak-post", weakPost},
    {"enumeration", enumeration},
    {"enumerations-in-each-other", enumerationsInEachOther},
    {NULL, NULL},
};
