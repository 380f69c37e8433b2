#include "objc/EndpointTest.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/files/FileManager.hpp>
#include <KeloAPI/files/FileQueue.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

class FilesTest : public EndpointTest {
protected:
    FilesTest() { manager.documentsDirectory = directory; }
    ~FilesTest() override {
        [manager kill];
        [queue kill];
    }

    FileEndpoint *endpointOf(NSString *path) const {
        return [[[FileEndpoint alloc] initWithPath:path fileManager:manager] autorelease];
    }
    NSURL *place(NSString *name) const {
        return [NSURL fileURLWithPath:[directory stringByAppendingString:name]];
    }
    NSString *read(NSString *name) const {
        return [NSString stringWithContentsOfFile:[[place(name) path] description]];
    }

    KeloAPI::testing::TemporaryFolder folder;
    NSString *const directory =
        [NSString stringWithFormat:@"%s/", std::string(folder.path()).c_str()];
    FileManager *const manager = [FileManager sharedGroupManager:@"/objc-tests/"];
    FileQueue *const queue = [FileQueue withKey:@"objc-tests"];
};

} // namespace

TEST_F(FilesTest, ManagersAreRegistered) {
    EXPECT_TRUE(same(manager.relativePath, @"/objc-tests/"));
    EXPECT_TRUE(same(manager.documentsDirectory, directory));
    EXPECT_EQ([FileManager sharedGroupManager:@"/objc-tests/"], manager);
    [manager kill];
    EXPECT_NE([FileManager sharedGroupManager:@"/objc-tests/"], manager);
    [[FileManager sharedGroupManager:@"/objc-tests/"] kill];
    manager.documentsDirectory = nil;
    EXPECT_EQ(manager.documentsDirectory, nil);
}

TEST_F(FilesTest, ManagersCleanTheirDirectory) {
    folder.write("a", "1");
    folder.write("b", "2");
    [manager cleanDirectory:-1];
    EXPECT_EQ(read(@"a"), nil);
    EXPECT_EQ(read(@"b"), nil);
}

TEST_F(FilesTest, AFileAndItsPlace) {
    FileEndpoint *endpoint = endpointOf(@"https://media.example/v/abc.mp4?sig=1");
    EXPECT_TRUE(same(endpoint.path, @"https://media.example/v/abc.mp4?sig=1"));
    EXPECT_EQ(endpoint.fileManager, manager);
    EXPECT_EQ(endpoint.session, registrySession());
    EXPECT_TRUE(same([endpoint documentsFile], place(@"abc.mp4")));
    EXPECT_EQ([endpoint localUrl], nil);
    folder.write("abc.mp4", "video");
    EXPECT_TRUE(same([endpoint localUrl], place(@"abc.mp4")));
    manager.documentsDirectory = nil;
    EXPECT_EQ([endpoint documentsFile], nil);
}

TEST_F(FilesTest, KeepsSubscribers) {
    FileEndpoint *endpoint = endpointOf(@"a");
    EXPECT_EQ([endpoint.subscribers count], 0U);
    endpoint.subscribers = [NSArray arrayWithObjects:listener, manager, nil];
    ASSERT_EQ([endpoint.subscribers count], 2U);
    EXPECT_EQ([endpoint.subscribers objectAtIndex:0], listener);
    EXPECT_EQ([endpoint.subscribers objectAtIndex:1], manager);
    endpoint.subscribers = nil;
    EXPECT_EQ([endpoint.subscribers count], 0U);
}

TEST_F(FilesTest, Downloads) {
    FileEndpoint *endpoint = endpointOf(@"https://media.example/v/abc.mp4");
    [endpoint downloadTo:place(@"abc.mp4") target:listener action:@selector(heard:)];
    EXPECT_EQ([listener.calls count], 0U);
    ASSERT_TRUE(answered("video"));
    FileDownloadResult *result = listener.object;
    EXPECT_TRUE([result isMemberOfClass:[FileDownloadResult class]]);
    EXPECT_TRUE(result.success);
    EXPECT_EQ(result.endpoint, endpoint);
    EXPECT_TRUE(same([endpoint localUrl], place(@"abc.mp4")));
    EXPECT_TRUE(same(read(@"abc.mp4"), @"video"));
    // What is there already is answered inside the call.
    [endpointOf(@"/v/abc.mp4") downloadTo:place(@"other") target:listener action:@selector(heard:)];
    EXPECT_EQ([listener.calls count], 2U);
    EXPECT_EQ(transport->requests().size(), 1U);
}

TEST_F(FilesTest, DownloadFailures) {
    FileEndpoint *endpoint = endpointOf(@"https://media.example/v/abc.mp4");
    [endpoint downloadTo:place(@"abc.mp4") target:listener action:@selector(heard:)];
    transport->answer(ScriptedAnswer::failure(KeloAPI::Error("some.domain", 9)));
    ASSERT_TRUE(hears(1));
    FileDownloadResult *result = listener.object;
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.endpoint, nil);
    EXPECT_EQ([result.error code], 9);
    EXPECT_EQ([endpoint localUrl], nil);
}

TEST_F(FilesTest, Deletes) {
    folder.write("abc.mp4", "video");
    FileEndpoint *endpoint = endpointOf(@"/v/abc.mp4");
    [endpoint delete];
    EXPECT_EQ(read(@"abc.mp4"), nil);
    EXPECT_TRUE(same([endpoint localUrl], place(@"abc.mp4")));
    EXPECT_EQ([endpointOf(@"/v/abc.mp4") localUrl], nil);
    folder.write("abc.mp4", "again");
    EXPECT_TRUE([endpoint deleteAndReturnError:nullptr]);
    EXPECT_EQ(read(@"abc.mp4"), nil);
    NSException *exception = raised([&] { [endpoint delete]; });
    EXPECT_EQ([[[exception userInfo] objectForKey:NSUnderlyingErrorKey] code], ENOENT);
    [endpointOf(@"/v/abc.mp4") delete]; // knows of no file
}

TEST_F(FilesTest, DeletesWhatTheSystemRefuses) {
    manager.documentsDirectory = @"/proc/self/";
    FileEndpoint *endpoint = endpointOf(@"/v/status");
    ASSERT_NE([endpoint localUrl], nil);
    NSException *exception = raised([&] { [endpoint delete]; });
    EXPECT_TRUE(same([exception name], NSGenericException));
    NSError *error = nil;
    EXPECT_FALSE([endpoint deleteAndReturnError:&error]);
    EXPECT_TRUE(same([error domain], NSPOSIXErrorDomain));
    EXPECT_GT([error code], 0);
    EXPECT_TRUE(same([[error userInfo] objectForKey:NSFilePathErrorKey], @"/proc/self/status"));
    NSError *raisedError = [[exception userInfo] objectForKey:NSUnderlyingErrorKey];
    EXPECT_EQ([raisedError code], [error code]);
    EXPECT_TRUE(same([exception reason], [error localizedDescription]));
    EXPECT_FALSE([endpoint deleteAndReturnError:nullptr]);
}

TEST_F(FilesTest, QueuesAreRegistered) {
    EXPECT_EQ([FileQueue withKey:@"objc-tests"], queue);
    [queue kill];
    EXPECT_NE([FileQueue withKey:@"objc-tests"], queue);
    [[FileQueue withKey:@"objc-tests"] kill];
}

TEST_F(FilesTest, QueuesByPriority) {
    FileEndpoint *first = endpointOf(@"https://media.example/a");
    FileEndpoint *low = endpointOf(@"https://media.example/b");
    FileEndpoint *high = endpointOf(@"https://media.example/c");
    SEL action = @selector(heard:);
    [queue download:first to:place(@"a") priority:QueuePriorityHigh target:listener action:action];
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return transport->requests().size() == 1; }));
    [queue download:low to:place(@"b") target:listener action:action];
    [queue download:high to:place(@"c") priority:QueuePriorityNormal target:listener action:action];
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return [queue.queuedFiles count] == 3; }));
    EXPECT_EQ([queue.queuedFiles objectAtIndex:0], first);
    EXPECT_EQ([queue.queuedFiles objectAtIndex:1], high);
    EXPECT_EQ([queue.queuedFiles objectAtIndex:2], low);
    for (int i = 0; i < 3; ++i) {
        transport->answer(ScriptedAnswer::json("video"));
    }
    ASSERT_TRUE(hears(3));
    EXPECT_EQ([[[listener.calls objectAtIndex:1] objectAtIndex:0] endpoint], high);
    EXPECT_EQ([queue.queuedFiles count], 0U);
    EXPECT_TRUE(same(read(@"c"), @"video"));
}

TEST_F(FilesTest, KillDropsRequests) {
    FileEndpoint *file = endpointOf(@"https://media.example/a");
    [queue download:file to:place(@"a") target:listener action:@selector(heard:)];
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return transport->requests().size() == 1; }));
    [queue kill];
    EXPECT_EQ([queue.queuedFiles count], 0U);
    transport->answer(ScriptedAnswer::json("video"));
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return [file localUrl] != nil; }));
    // Another file's answer would come behind that of the first.
    FileEndpoint *next = endpointOf(@"https://media.example/b");
    [next downloadTo:place(@"b") target:listener action:@selector(heard:)];
    transport->answer(ScriptedAnswer::json("video"));
    ASSERT_TRUE(hears(1));
    EXPECT_EQ([listener.calls count], 1U);
    EXPECT_EQ([(FileDownloadResult *)listener.object endpoint], next);
}

TEST_F(FilesTest, QueuesRefuseWhatIsNoRequest) {
    FileEndpoint *file = endpointOf(@"a");
    EXPECT_TRUE(same([raised([&] {
                         [queue download:file
                                      to:place(@"a")
                                priority:(QueuePriority)3
                                  target:nil
                                  action:nullptr];
                     }) name],
                     NSInvalidArgumentException));
}

TEST_F(FilesTest, Blocks) {
    int count = 0;
    Block<id> heard([&](id result) { count += [(FileDownloadResult *)result success] ? 1 : 0; });
    [blocks(endpointOf(@"https://media.example/a")) downloadTo:place(@"a")
                                                    completion:heard.object()];
    transport->answer(ScriptedAnswer::json("video"));
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return count == 1; }));
    [blocks(queue) download:endpointOf(@"https://media.example/b")
                         to:place(@"b")
                 completion:heard.object()];
    transport->answer(ScriptedAnswer::json("video"));
    ASSERT_TRUE(KeloAPI::testing::runUntil([&] { return count == 2; }));
    [blocks(queue) download:endpointOf(@"https://media.example/c")
                         to:place(@"c")
                   priority:QueuePriorityHigh
                 completion:heard.object()];
    transport->answer(ScriptedAnswer::json("video"));
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return count == 3; }));
}
