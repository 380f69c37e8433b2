#include "support/ManualTransport.hpp"
#include "support/ScriptedSession.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/async.hpp>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace KeloAPI::testing {
namespace {

using async::Task;
using async::Wait;
using fakes::ScriptedAnswer;

static_assert(!std::is_copy_constructible_v<Task<>>);
static_assert(!std::is_copy_constructible_v<async::Call<MeResult>>);

const char* const me = R"({"data": {"userId": 7, "username": "mara"}})";
const char* const refusal = R"({"error": "Sign in", "code": 103})";

class AsyncTest : public ScriptedSessionTest {
protected:
    AsyncTest() {
        session = Api::session(SessionType::Authenticated, delegate);
        session->setSessionManager(httpManager);
        Api::setSessionDelegate(delegate);
    }

    /// How often it ended, and with what.
    Task<> readMe(Wait wait = Wait::First) {
        const MeResult result = co_await async::fetch(MeEndpoint::create(), wait);
        ++ended;
        onMain = std::this_thread::get_id() == mainThread;
        name = result.success() ? result.success()->user->username.value_or("") : "";
    }

    template <class T>
    static bool finishes(const Task<T>& task) {
        return runUntil([&task] { return task.isDone(); });
    }

    const std::thread::id mainThread = std::this_thread::get_id();
    int ended = 0;
    bool onMain = false;
    std::string name;
};

TEST_F(AsyncTest, ResumesOnceOnTheMainQueue) {
    const Task<> task = readMe();
    EXPECT_EQ(ended, 0);
    transport->answer(ScriptedAnswer::json(me));
    ASSERT_TRUE(finishes(task));
    EXPECT_EQ(ended, 1);
    EXPECT_TRUE(onMain);
    EXPECT_EQ(name, "mara");
}

TEST_F(AsyncTest, WithTheFirstCompletionAndDropsARetrys) {
    const Task<> task = readMe();
    transport->answer(ScriptedAnswer::json(refusal));
    ASSERT_TRUE(finishes(task));
    EXPECT_EQ(name, "");
    transport->answer(ScriptedAnswer::json(me));
    session->handleQueuedRetries(true);
    passThrough();
    EXPECT_EQ(transport->requests().size(), 3U); // the fence is one
    EXPECT_EQ(ended, 1);
}

TEST_F(AsyncTest, OrWithARetrysWhereThatIsAskedFor) {
    const Task<> task = readMe(Wait::AfterRetry);
    transport->answer(ScriptedAnswer::json(refusal));
    ASSERT_TRUE(runUntil([&] { return delegate->reauthCount == 1; }));
    passThrough();
    EXPECT_EQ(ended, 0);
    transport->answer(ScriptedAnswer::json(me));
    session->handleQueuedRetries(true);
    ASSERT_TRUE(finishes(task));
    EXPECT_EQ(name, "mara");
}

TEST_F(AsyncTest, CallsOfEveryKindWaitForTheirRetry) {
    const auto fetch = []() -> Task<bool> {
        const auto views =
            co_await async::fetchViews(LongformViewsEndpoint::create("lf"), Wait::AfterRetry);
        co_return views&& views.value()->count == 12;
    };
    const auto submit = []() -> Task<bool> {
        const auto error =
            co_await async::submitView(LongformViewsEndpoint::create("lf"), Wait::AfterRetry);
        co_return !error;
    };
    int refused = 0;
    for (const std::function<Task<bool>()>& call : {std::function<Task<bool>()>(fetch), {submit}}) {
        auto task = call();
        transport->answer(ScriptedAnswer::json(refusal));
        ++refused;
        ASSERT_TRUE(runUntil([&] { return delegate->reauthCount == refused; }));
        passThrough();
        EXPECT_FALSE(task.isDone());
        transport->answer(ScriptedAnswer::json(R"({"data": {"longformId": "lf", "count": 12}})"));
        session->handleQueuedRetries(true);
        ASSERT_TRUE(finishes(task));
        EXPECT_TRUE(task.result());
    }
}

TEST_F(AsyncTest, AnotherErrorIsNotWaitedBeyond) {
    const Task<> task = readMe(Wait::AfterRetry);
    transport->answer(ScriptedAnswer::json(R"({"error": "No", "code": 7})"));
    ASSERT_TRUE(finishes(task));
}

TEST_F(AsyncTest, ATaskThatGoesHearsNothing) {
    { const Task<> task = readMe(); }
    transport->answer(ScriptedAnswer::json(me));
    passThrough();
    EXPECT_EQ(ended, 0);
}

TEST_F(AsyncTest, ATaskThatGoesCancelsACallWithAHandle) {
    const auto manual = std::make_shared<ManualTransport>();
    session->setSessionManager(std::make_shared<Manager>(manual));
    {
        const auto task = [](std::shared_ptr<Session> on) -> Task<> {
            co_await async::fetchSounds(SoundboardEndpoint::create(on));
        }(session);
        ASSERT_EQ(manual->requests.size(), 1U);
        EXPECT_EQ(manual->cancelCount, 0);
    }
    EXPECT_EQ(manual->cancelCount, 1);
    manual->complete(httpError(HTTPErrorCode::Cancelled, "cancelled"));
}

TEST_F(AsyncTest, ValuesAndErrorsComeAsOneResult) {
    const auto sounds = [this]() -> Task<std::size_t> {
        const auto result = co_await async::fetchSounds(SoundboardEndpoint::create(session));
        co_return result ? result.value().size() : 99;
    };
    for (const auto& [answer, expected] :
         {std::pair{R"({"data": {"records": []}})", std::size_t{0}}, {R"({"code": 7})", 99}}) {
        auto task = sounds();
        transport->answer(ScriptedAnswer::json(answer));
        ASSERT_TRUE(finishes(task));
        EXPECT_EQ(task.result(), expected);
    }
}

/// Downloads a file that is there already: the call completes before it returns.
class AsyncFileTest : public AsyncTest {
protected:
    AsyncFileTest() {
        folder.write("a.mp4", "video");
        manager->setDocumentsDirectory(folder.path() + "/");
    }
    ~AsyncFileTest() override { manager->kill(); }

    Task<> download() {
        const auto endpoint = FileEndpoint::create("https://service.example/a.mp4", manager);
        const auto result = co_await async::download(endpoint, *endpoint->documentsFile());
        ended += result.success() != nullptr ? 1 : 0;
    }

    const TemporaryFolder folder;
    const std::shared_ptr<FileManager> manager = FileManager::sharedGroupManager("async-test");
};

TEST_F(AsyncFileTest, AFileThatIsThereAlreadyResumesBehindTheCall) {
    const Task<> task = download();
    EXPECT_EQ(ended, 0);
    ASSERT_TRUE(finishes(task));
    EXPECT_EQ(ended, 1);
}

TEST_F(AsyncFileTest, ATaskThatGoesBeforeThatHearsNothing) {
    { const Task<> task = download(); }
    passThrough();
    EXPECT_EQ(ended, 0);
}

TEST_F(AsyncTest, AnUploadReadsFromTopToBottom) {
    const auto upload = []() -> Task<std::string> {
        const auto endpoint = LongformUploadEndpoint::create();
        const auto begun = co_await async::initiateUpload(endpoint, 5);
        const std::string id = begun.value()->mediaId;
        const auto failed = co_await async::uploadSegment(endpoint, id, Data("video"), 1);
        const auto closed = co_await async::finalizeUpload(endpoint, id);
        const auto seen = co_await async::checkStatus(endpoint, id);
        co_return failed || !closed ? "" : seen.value()->mediaId;
    };
    for (const char* answer : {R"({"data": {"mediaId": "m"}})", R"({"data": {}})",
                               R"({"data": {"mediaId": "m"}})", R"({"data": {"mediaId": "n"}})"}) {
        transport->answer(ScriptedAnswer::json(answer));
    }
    auto task = upload();
    ASSERT_TRUE(finishes(task));
    EXPECT_EQ(task.result(), "n");
}

TEST_F(AsyncTest, FeedbackAndViewsAreHeard) {
    const auto send = []() -> Task<bool> {
        const auto feedback = RecommendationsEndpoint::create();
        const auto user =
            co_await async::addUserFeedback(feedback, "7", RecommendationBoost::Positive);
        const auto post =
            co_await async::addPostFeedback(feedback, "9", RecommendationBoost::Negative);
        const auto error = co_await async::submitView(LongformViewsEndpoint::create("lf"));
        co_return user.success() && post.error() && !error;
    };
    for (const char* answer :
         {R"({"data": {}})", R"({"error": "No", "code": 7})", R"({"data": {}})"}) {
        transport->answer(ScriptedAnswer::json(answer));
    }
    auto task = send();
    ASSERT_TRUE(finishes(task));
    EXPECT_TRUE(task.result());
}

TEST_F(AsyncTest, ActionsAndViewsBringWhatTheServiceSays) {
    const auto post = std::make_shared<KLWatchPost>();
    post->postId = "123";
    const auto send = [post]() -> Task<std::int64_t> {
        const auto like = co_await async::toggle(LikeActionEndpoint::create(post), true);
        const auto unlike = co_await async::toggle(LikeActionEndpoint::create(post), false);
        const auto follow = co_await async::setFollowingOnTwitter(UserEndpoint::create("7"), true);
        const auto views = co_await async::fetchViews(LongformViewsEndpoint::create("lf"));
        const bool went = like.success() && unlike.error() && follow.success() && views;
        co_return went ? views.value()->count : -1;
    };
    for (const char* answer : {R"({"data": {}})", R"({"error": "No", "code": 7})",
                               R"({"error": "Done before", "code": 230})",
                               R"({"data": {"longformId": "lf", "count": 12}})"}) {
        transport->answer(ScriptedAnswer::json(answer));
    }
    auto task = send();
    ASSERT_TRUE(finishes(task));
    EXPECT_EQ(task.result(), 12);
    std::vector<std::string> sent;
    for (const URLRequest& request : transport->requests()) {
        sent.push_back(std::string(KeloAPI::name(request.method)) + " " + request.url->path());
    }
    EXPECT_EQ(sent, (std::vector<std::string>{"POST /posts/123/likes", "DELETE /posts/123/likes",
                                              "POST /users/7/follow-on-twitter",
                                              "GET /longforms/lf/views"}));
}

TEST_F(AsyncTest, PagesAreReadToTheEndAndAgainAfterAnError) {
    async::TimelinePages pages(TimelineEndpoint::create("popular"));
    const auto next = [&](const std::string& answer) {
        auto task = pages.next();
        if (pages.nextEndpoint()) {
            transport->answer(ScriptedAnswer::json(answer));
        }
        EXPECT_TRUE(finishes(task));
        return task.result();
    };
    const std::string first = R"({"data": {"records": [{"postId": 1}], "nextPage": 2}})";
    const auto page = next(first);
    ASSERT_TRUE(page && page->success());
    EXPECT_EQ(page->success()->posts.size(), 1U);
    const auto second = pages.nextEndpoint();
    EXPECT_NE(next(R"({"error": "Later", "code": 7})")->error(), nullptr);
    EXPECT_EQ(pages.nextEndpoint(), second);
    EXPECT_TRUE(next(R"({"data": {"records": [{"postId": 2}]}})")->success());
    EXPECT_EQ(transport->requests().back().url->query().value_or("").find("page=2") !=
                  std::string::npos,
              true);
    EXPECT_EQ(pages.nextEndpoint(), nullptr);
    EXPECT_FALSE(next(""));
}

TEST_F(AsyncTest, PagesGoOnWhereOthersStopped) {
    const auto read = [this](async::TimelinePages& pages, const char* answer) {
        transport->answer(ScriptedAnswer::json(answer));
        auto task = pages.next();
        EXPECT_TRUE(finishes(task));
        return task.result();
    };
    std::shared_ptr<TimelineEndpoint> next;
    {
        async::TimelinePages pages(TimelineEndpoint::create("popular"));
        EXPECT_TRUE(read(pages, R"({"data": {"records": [{"postId": 1}], "nextPage": 2}})"));
        next = pages.nextEndpoint();
    }
    async::TimelinePages rest(next);
    const auto page = read(rest, R"({"data": {"records": [{"postId": 5}]}})");
    ASSERT_TRUE(page && page->success());
    EXPECT_EQ(page->success()->posts.at(0)->postId, "5");
    const auto requests = transport->requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[1].url->path(), requests[0].url->path());
    EXPECT_EQ(requests[0].url->query().value_or("").find("page=2"), std::string::npos);
    EXPECT_NE(requests[1].url->query().value_or("").find("page=2"), std::string::npos);
    EXPECT_EQ(rest.nextEndpoint(), nullptr);
}

TEST_F(AsyncTest, ATaskWaitsForAnotherAndHearsItsException) {
    const auto inner = []() -> Task<int> {
        const MeResult result = co_await async::fetch(MeEndpoint::create());
        if (result.error()) {
            throw std::runtime_error("no user");
        }
        co_return 7;
    };
    const auto outer = [inner]() -> Task<std::string> {
        try {
            co_return std::to_string(co_await inner());
        } catch (const std::runtime_error& error) {
            co_return error.what();
        }
    };
    for (const auto& [answer, expected] : {std::pair{me, "7"}, {R"({"code": 7})", "no user"}}) {
        auto task = outer();
        transport->answer(ScriptedAnswer::json(answer));
        ASSERT_TRUE(finishes(task));
        EXPECT_EQ(task.result(), expected);
    }
}

TEST_F(AsyncTest, AThreadThatMayBlockHasAFuture) {
    transport->answer(ScriptedAnswer::json(me));
    auto future = async::futureOf(async::fetch(MeEndpoint::create()));
    std::atomic<bool> read = false;
    std::thread blocked([&] {
        name = future.get().success()->user->username.value_or("");
        read = true;
    });
    EXPECT_TRUE(runUntil([&] { return read.load(); }));
    blocked.join();
    EXPECT_EQ(name, "mara");
}

} // namespace
} // namespace KeloAPI::testing
