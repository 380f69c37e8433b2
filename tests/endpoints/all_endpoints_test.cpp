#include "support/EndpointCalls.hpp"
#include "support/EndpointMaking.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

#include <cstdio>

namespace KeloAPI::testing {

using SessionPointer = std::shared_ptr<Session>;

static_assert(!std::is_default_constructible_v<MeEndpoint>);
static_assert(!madeOnTheStack<MeEndpoint, SessionPointer>);
static_assert(!madeOnTheStack<TimelineEndpoint, SessionPointer>);
static_assert(!std::is_constructible_v<TimelineEndpoint, SessionPointer>);
static_assert(createdWith<MeEndpoint> && createdWith<MeEndpoint, SessionPointer>);
static_assert(createdWith<TimelineEndpoint, SessionPointer>);
static_assert(createdWith<LongformUploadEndpoint> && createdWith<LoopsEndpoint>);
static_assert(createdWith<RecommendationsEndpoint>);
static_assert(createdWith<LongformViewsEndpoint, const char*>);
static_assert(createdWith<FileEndpoint, const char*, std::shared_ptr<FileManager>>);
// These belong to the registry's session.
static_assert(!createdWith<LongformUploadEndpoint, SessionPointer>);
static_assert(!createdWith<LoopsEndpoint, SessionPointer>);
static_assert(!createdWith<RecommendationsEndpoint, SessionPointer>);
static_assert(!createdWith<LongformViewsEndpoint, SessionPointer>);
static_assert(!createdWith<FileEndpoint, SessionPointer>);

/// What holds for endpoints of every kind.
class AllEndpointsTest : public RegistrySessionTest {
protected:
    AllEndpointsTest() { post->postId = "123"; }

    std::shared_ptr<KLWatchPost> post = std::make_shared<KLWatchPost>();
    std::map<std::string, SendCall> calls = endpointCalls(post, "1");
};

TEST_F(AllEndpointsTest, UseTheSignedInSessionWithTheDefaultDelegate) {
    const std::vector<std::function<std::shared_ptr<Endpoint>()>> makers = {
        [] { return MeEndpoint::create(); },
        [] { return UserEndpoint::create("123"); },
        [] { return TimelineEndpoint::create("users/42"); },
        [] { return LoopsEndpoint::create(); },
        [] { return RecommendationsEndpoint::create(); },
        [] { return LongformViewsEndpoint::create("abc"); },
        [] { return LongformUploadEndpoint::create(); },
        [this] { return LikeActionEndpoint::create(post); },
        [this] { return RekeloActionEndpoint::create(post); },
        [] { return FileEndpoint::create("/v/a", FileManager::sharedGroupManager("/all/")); }};
    for (const auto& make : makers) {
        session->setDelegate(nullptr);
        EXPECT_EQ(make()->session(), session) << make()->path();
        EXPECT_EQ(session->delegate(), delegate) << make()->path();
    }
    FileManager::sharedGroupManager("/all/")->kill();
    const auto other = std::make_shared<Session>(SessionType::UnAuthenticated);
    EXPECT_EQ(SoundboardEndpoint::create(other)->session(), other);
    EXPECT_EQ(UserEndpoint::create(other, "5")->session(), other);
    EXPECT_EQ(MeEndpoint::create(other)->session(), other);
    EXPECT_EQ(TimelineEndpoint::create(other)->session(), other);
}

TEST_F(AllEndpointsTest, PassErrorsOnAndEndWithTheirHandle) {
    int cancelled = 0;
    for (const auto& [name, sendCall] : calls) {
        SCOPED_TRACE(name);
        std::vector<Error> errors;
        const auto send = [&, &sendWith = sendCall] {
            return sendWith([&](const auto& error) { errors.push_back(error.value()); });
        };
        transport->answer(fakes::ScriptedAnswer::json(R"({"error": "no", "code": 7})"));
        send();
        ASSERT_TRUE(runUntil([&] { return errors.size() == 1; }));
        EXPECT_EQ(errors[0].code(), 7);
        transport->answer(fakes::ScriptedAnswer::failure(Error("KeloAPI.HTTP", 5)));
        send();
        ASSERT_TRUE(runUntil([&] { return errors.size() == 2; }));
        EXPECT_EQ(errors[1].domain(), "KeloAPI.HTTP");
        EXPECT_EQ(errors[1].code(), 5);
        if (const auto handle = send()) {
            handle->cancel();
            EXPECT_EQ(errors.size(), 2U) << "not within the call";
            ++cancelled;
        } else {
            transport->answer(
                fakes::ScriptedAnswer::failure(httpError(HTTPErrorCode::Cancelled, "")));
        }
        passThrough();
        ASSERT_EQ(errors.size(), 3U);
        EXPECT_TRUE(isHTTPError(errors[2], HTTPErrorCode::Cancelled));
    }
    EXPECT_EQ(cancelled, 7);
    EXPECT_EQ(delegate->reauthCount, 0);
}

TEST_F(AllEndpointsTest, ThatActIgnoreWhatTheAnswerHolds) {
    for (const char* name : {"follow", "post feedback", "view"}) {
        for (const auto& [body, reason] :
             {std::pair(R"({"data": {"longformId": 5, "anything": [1, 2]}})", ""),
              std::pair(R"({"data": {"records": [{}, {"x": 1}]}})", ""),
              std::pair(R"({"data": []})", "Malformed data section in response"),
              std::pair(R"({"data": 5})", "Malformed data section in response")}) {
            transport->answer(fakes::ScriptedAnswer::json(body));
            std::optional<std::string> outcome;
            calls.at(name)(
                [&](const auto& error) { outcome = error ? error->localizedDescription() : ""; });
            ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
            EXPECT_EQ(outcome, reason) << name << ' ' << body;
        }
    }
}

/// Says that a request reached it.
class TellingTransport final : public Transport {
public:
    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind kind) override {
        std::fputs("sent\n", stderr);
        return _silent.start(request, std::move(observer), kind);
    }

private:
    fakes::ScriptedTransport _silent;
};

using ParsedCompletion =
    std::function<void(std::vector<std::shared_ptr<KLEmpty>>, std::optional<Metadata>,
                       const Timeline&, std::optional<Error>)>;

static void hearNothing(std::vector<std::shared_ptr<KLEmpty>> /*items*/,
                        std::optional<Metadata> /*metadata*/, const Timeline& /*timeline*/,
                        std::optional<Error> /*error*/) {}

class EmptyCompletionDeathTest : public RegistrySessionTest {
protected:
    using Calls = std::vector<std::pair<const char*, std::function<void()>>>;

    /// None of these sends anything: each is refused before.
    void expectRefused(const Calls& calls, const std::string& reason) {
        // A child that is a mere fork has none of the threads that it would wait for in the end.
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        session->setSessionManager(std::make_shared<Manager>(std::make_shared<TellingTransport>()));
        for (const auto& [name, call] : calls) {
            EXPECT_DEATH(call(), "^KeloAPI: contract violated: " + reason + "\n$") << name;
        }
    }

    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
    std::shared_ptr<KLEmptyParser> parser = std::make_shared<KLEmptyParser>();
};

TEST_F(EmptyCompletionDeathTest, IsRefusedByEveryCall) {
    const URL file = URL::fileURL("/nowhere/a.mp4");
    const auto upload = LongformUploadEndpoint::create();
    const auto views = LongformViewsEndpoint::create("1");
    const auto post = std::make_shared<KLWatchPost>();
    void (*const none)(std::vector<std::shared_ptr<KLEmpty>>, std::optional<Metadata>,
                       const Timeline&, std::optional<Error>) = nullptr;
    expectRefused(
        {
            {"request for text", [&] { endpoint->request(Endpoint::TextCompletion()); }},
            {"request", [&] { endpoint->request(parser, ParsedCompletion()); }},
            {"request with a pointer", [&] { endpoint->request(parser, none); }},
            {"upload", [&] { endpoint->upload(parser, Data("a"), ParsedCompletion()); }},
            {"download", [&] { endpoint->download(file, nullptr); }},
            {"the session's download", [&] { session->download(*endpoint, file, nullptr); }},
            {"me", [&] { MeEndpoint::create(session)->get(nullptr); }},
            {"user", [&] { UserEndpoint::create("1")->setFollowingOnTwitter(true, nullptr); }},
            {"timeline", [&] { TimelineEndpoint::create("graph")->fetch(nullptr); }},
            {"action", [&] { LikeActionEndpoint::create(post)->toggle(true, nullptr); }},
            {"sounds", [&] { SoundboardEndpoint::create(session)->fetchSounds(nullptr); }},
            {"views", [&] { views->fetchViews(nullptr); }},
            {"a view", [&] { views->submitView(nullptr); }},
            {"initiate", [&] { upload->initiateUpload(1, nullptr); }},
            {"segment", [&] { upload->uploadSegment("1", Data("a"), 0, nullptr); }},
            {"finalize", [&] { upload->finalizeUpload("1", nullptr); }},
            {"status", [&] { upload->checkStatus("1", nullptr); }},
        },
        "a call needs a completion");
}

TEST_F(EmptyCompletionDeathTest, IsRefusedByTheHandlersOfARequest) {
    const auto serializer = [](const ResponseContent&) { return Result<int>(1); };
    const auto request = httpManager->request(*endpoint);
    expectRefused(
        {
            {"completion", [&] { request->response<int>(serializer, nullptr); }},
            {"serializer", [&] { request->response<int>(nullptr, [](Result<int>, Timeline) {}); }},
            {"handler", [&] { request->response(nullptr); }},
        },
        "a response handler must not be empty");
}

TEST_F(EmptyCompletionDeathTest, IsNotAFunctionOrALambda) {
    endpoint->request(parser, hearNothing);
    endpoint->request(parser, [](const auto&, const auto&, const auto&, const auto&) {});
    EXPECT_EQ(transport->requests().size(), 2U);
}

} // namespace KeloAPI::testing
