#include "FileQueueTest.hpp"
#include "support/LeaveProcess.hpp"
#include "support/Sanitizers.hpp"

#include <KeloAPI/files/Application.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace KeloAPI::testing {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

static_assert(!std::is_default_constructible_v<FileQueue>);
static_assert(!std::is_constructible_v<FileQueue, const char*>);
static_assert(std::is_destructible_v<FileQueue>);
static_assert(std::is_invocable_v<decltype(FileQueue::withKey), const char*>);
static_assert(queuePriorityOf(0) == QueuePriority::Low);
static_assert(queuePriorityOf(1) == QueuePriority::Normal);
static_assert(queuePriorityOf(2) == QueuePriority::High);
static_assert(!queuePriorityOf(3) && !queuePriorityOf(-1) && !queuePriorityOf(258));

using FileQueueSingleTest = FileQueueTest;

TEST_F(FileQueueSingleTest, IsOneForEachKeyAndForgetsItselfByIdentity) {
    EXPECT_EQ(FileQueue::withKey("test"), queue);
    const auto old = FileQueue::withKey("other");
    EXPECT_NE(old, queue);
    old->kill();
    const auto newer = FileQueue::withKey("other");
    EXPECT_NE(newer, old);
    old->kill();
    EXPECT_EQ(FileQueue::withKey("other"), newer);
    EXPECT_EQ(FileQueue::withKey("test"), queue);
    newer->kill();
}

TEST_F(FileQueueSingleTest, NamesItsThreadByPrefixAndKey) {
    const std::string label = queue->downloadQueue().label();
    EXPECT_TRUE(label.ends_with(".filedownloadqueue.test")) << label;
}

TEST_F(FileQueueSingleTest, AnswersWithinTheCallForAFileThatIsThere) {
    folder.write("a", "video");
    const auto cached = file("a");
    std::shared_ptr<FileEndpoint> answered;
    queue->download(cached, place("a"), [&](const FileDownloadResult& result) {
        answered = result.success()->endpoint;
    });
    EXPECT_EQ(answered, cached);
    settle();
    EXPECT_EQ(sent(), "");
}

TEST_F(FileQueueSingleTest, LetsItsFilesAndTheirCompletionsGoWhenItIsKilled) {
    request("a");
    std::weak_ptr<FileEndpoint> endpoint;
    std::weak_ptr<int> captured;
    {
        const auto waiting = file("b");
        const auto token = std::make_shared<int>(1);
        endpoint = waiting;
        captured = token;
        queue->download(waiting, place("b"), [token](const FileDownloadResult&) {});
    }
    settle();
    EXPECT_FALSE(endpoint.expired() || captured.expired());
    queue->kill();
    EXPECT_TRUE(endpoint.expired());
    EXPECT_TRUE(captured.expired());
}

TEST_F(FileQueueSingleTest, AnswersInAForkedChildThatItIsTheParents) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers lose their own threads in a child";
    }
    request("a"); // and is never answered
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        bool inherited = false;
        queue->download(file("b"), place("b"), [&](const FileDownloadResult& result) {
            inherited =
                result.error() != nullptr && isHTTPError(*result.error(), HTTPErrorCode::Inherited);
        });
        runUntil([&] { return inherited; });
        leaveProcess(inherited ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(order(), "a");
}

TEST_F(FileQueueSingleTest, AnswersOnTheMainQueueWithTheEndpointThatRan) {
    const auto running = file("a");
    const auto latest = file("a");
    std::vector<std::shared_ptr<FileEndpoint>> got;
    bool onMain = true;
    const auto mainThread = std::this_thread::get_id();
    const auto note = [&](const FileDownloadResult& result) {
        got.push_back(result.success()->endpoint);
        onMain = onMain && std::this_thread::get_id() == mainThread;
    };
    queue->download(running, place("a"), note);
    queue->download(file("b"), place("b"), note);
    queue->download(latest, place("a"), note);
    settle();
    finish(0);
    EXPECT_THAT(got, ElementsAre(running, running));
    EXPECT_TRUE(onMain);
    EXPECT_EQ(latest->localUrl(), place("a")) << "found on the disk";
}

/// Fetches a second file besides, as a host's endpoint might.
class Accompanied : public FileEndpoint {
public:
    Accompanied(Key key, std::string path, std::shared_ptr<FileManager> manager,
                std::function<void()> fetchCompanion)
        : FileEndpoint(key, std::move(path), std::move(manager))
        , _fetchCompanion(std::move(fetchCompanion)) {}

    using FileEndpoint::download;
    void download(const URL& destination, Completion completion,
                  DownloadDelivery delivery) override {
        _fetchCompanion();
        FileEndpoint::download(destination, std::move(completion), delivery);
    }

private:
    const std::function<void()> _fetchCompanion;
};

TEST_F(FileQueueSingleTest, ADownloadThatAQueuedEndpointStartsIsAnsweredOnTheMainQueue) {
    std::vector<std::thread::id> answeredOn;
    const auto note = [&] { answeredOn.push_back(std::this_thread::get_id()); };
    const auto companion = file("companion");
    const auto plain = Endpoint::create(session);
    plain->setPath("plain");
    queue->download(
        Endpoint::make<Accompanied>(
            "https://media.example/v/a", manager,
            [&] {
                companion->download(place("companion"), [&](const FileDownloadResult&) { note(); });
                plain->download(place("plain"),
                                [&](const URL&, const std::optional<Error>&) { note(); });
            }),
        place("a"), [&](const FileDownloadResult&) { note(); });
    settle();
    for (std::size_t i = 0; i < 3; ++i) {
        transport->answerRequest(i, {.body = "video"});
    }
    EXPECT_TRUE(runUntil([&] { return answeredOn.size() == 3; }));
    EXPECT_THAT(answeredOn, Each(std::this_thread::get_id()));
}

TEST_F(FileQueueSingleTest, CallsAFilesCompletionsInOrderInOneTask) {
    std::vector<int> called;
    for (const int tag : {1, 2, 3}) {
        queue->download(file("a"), place("a"),
                        [&, tag](const FileDownloadResult&) { called.push_back(tag); });
        request("b");
    }
    int tasks = 0;
    transport->answerRequest(0, {.body = "video"});
    EXPECT_TRUE(runUntil([&] {
        // Each look is a task's end: no task may leave the row half called.
        tasks += called.empty() || called.size() == 3 ? 0 : 1;
        return called.size() == 3;
    }));
    EXPECT_THAT(called, ElementsAre(1, 2, 3));
    EXPECT_EQ(tasks, 0);
}

TEST_F(FileQueueSingleTest, HandsAnErrorToAllThatWaitUnchanged) {
    std::vector<std::string> errors;
    for (int i = 0; i < 2; ++i) {
        queue->download(file("a"), place("a"), [&](const FileDownloadResult& result) {
            ASSERT_TRUE(result.error());
            errors.push_back(result.error()->domain() + std::to_string(result.error()->code()));
        });
        request("b");
    }
    finish(0, fakes::ScriptedAnswer::failure(Error("test", 7)));
    EXPECT_THAT(errors, ElementsAre("test7", "test7"));
}

/// Asks the queue while it goes, as a host's object might.
class Asking final : public Object {
public:
    explicit Asking(std::weak_ptr<FileQueue> queue)
        : _queue(std::move(queue)) {}
    ~Asking() override {
        if (const auto queue = _queue.lock()) {
            queue->queuedFiles();
        }
    }

private:
    std::weak_ptr<FileQueue> _queue;
};

TEST_F(FileQueueSingleTest, LetsEndpointsGoWithoutItsLock) {
    const auto asking = [&] {
        auto endpoint = file("a");
        endpoint->subscribers.push_back(std::make_shared<Asking>(queue));
        return endpoint;
    };
    request(asking(), place("a"), QueuePriority::Normal);
    request("b");
    request(asking(), place("a"), QueuePriority::Normal);
    request(asking(), place("a"), QueuePriority::Normal);
    finish(0);
    EXPECT_EQ(order(), "b") << "and it did not hang";
}

TEST_F(FileQueueSingleTest, ACompletionMayRequestMore) {
    queue->download(file("a"), place("a"), [&](const FileDownloadResult&) { request("b"); });
    settle();
    finish(0);
    finish(1);
    EXPECT_THAT(answers, ElementsAre("b"));
}

TEST_F(FileQueueSingleTest, AnswersAnyNumberOfFilesOfTheSameNameFromTheCache) {
    constexpr int all = 50'000;
    int answered = 0;
    request("a");
    for (int i = 0; i < all; ++i) {
        queue->download(
            FileEndpoint::create("https://media.example/" + std::to_string(i) + "/a", manager),
            place("a"), [&](const FileDownloadResult&) { ++answered; });
    }
    settle();
    transport->answer({.body = "video"});
    EXPECT_TRUE(runUntil([&] { return answered == all; }));
    EXPECT_EQ(sent(), "a") << "the first has brought it meanwhile";
    EXPECT_EQ(joined(answers), "a");
    EXPECT_EQ(order(), "");
}

TEST_F(FileQueueSingleTest, DropsARequestWhoseQueueIsGone) {
    std::promise<void> gone;
    std::promise<void> dealtWith;
    std::weak_ptr<FileQueue> weak;
    {
        const auto other = FileQueue::withKey("other");
        weak = other;
        other->kill();
        auto& entrance = const_cast<SerialQueue&>(other->downloadQueue());
        entrance.async([held = gone.get_future().share()] { held.wait(); });
        other->download(file("a"), place("a"),
                        [&](const FileDownloadResult&) { answers.emplace_back("a"); });
        entrance.async([&] { dealtWith.set_value(); });
    }
    EXPECT_TRUE(weak.expired()) << "a request holds it weakly";
    gone.set_value();
    dealtWith.get_future().wait();
    passThrough();
    EXPECT_EQ(sent(), "");
    EXPECT_THAT(answers, IsEmpty());
}

TEST_F(FileQueueSingleTest, MayGoWithARunningDownload) {
    bool done = false;
    std::weak_ptr<FileQueue> weak;
    {
        const auto other = FileQueue::withKey("other");
        weak = other;
        other->download(file("a"), place("a"), [&](const FileDownloadResult&) { done = true; });
        EXPECT_TRUE(runUntil([&] { return transport->waitingCount() == 1; }));
        other->kill();
    }
    EXPECT_TRUE(runUntil([&] { return weak.expired(); })) << "a download holds it weakly";
    finish(0);
    EXPECT_EQ(folder.read("a"), "video");
    EXPECT_FALSE(done);
}

TEST_F(FileQueueSingleTest, TakesRequestsFromManyThreadsWhichAskForTheCacheDirectory) {
    constexpr int threads = 8;
    constexpr int requests = 50;
    int answered = 0;
    int failed = 0;
    const auto fresh = FileManager::sharedGroupManager("/fresh/");
    Application::setGroupContainers(
        [this](const std::string&) { return URL::fileURL(folder.path()); });
    std::vector<std::thread> callers;
    for (int t = 0; t < threads; ++t) {
        callers.emplace_back([&, t] {
            for (int i = 0; i < requests; ++i) {
                // Every file is wanted by two of the threads.
                const std::string name = std::to_string(t / 2) + "-" + std::to_string(i);
                const auto wanted = FileEndpoint::create("https://media.example/" + name, fresh);
                queue->download(wanted, wanted->documentsFile().value(), *queuePriorityOf(i % 3),
                                [&](const FileDownloadResult& result) {
                                    ++answered;
                                    failed += result.error() ? 1 : 0;
                                });
            }
        });
    }
    for (int i = 0; i < threads * requests * 2; ++i) {
        transport->answer({.body = "video"});
    }
    EXPECT_TRUE(runUntil([&] { return answered >= threads * requests; }));
    for (std::thread& caller : callers) {
        caller.join();
    }
    settle();
    EXPECT_TRUE(runUntil([&] { return order().empty(); }));
    passThrough();
    EXPECT_EQ(answered, threads * requests);
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(fresh->documentsDirectory(), folder.path("fresh/"));
    fresh->kill();
    Application::setGroupContainers({});
}

using FileQueueDeathTest = FileQueueSingleTest;

TEST_F(FileQueueDeathTest, NeedsAnEndpointAndACompletion) {
    EXPECT_DEATH(queue->download(nullptr, place("a"), [](const FileDownloadResult&) {}),
                 "a file queue needs an endpoint");
    EXPECT_DEATH(queue->download(file("a"), place("a"), FileQueue::Completion()),
                 "a download needs a completion");
}

} // namespace KeloAPI::testing
