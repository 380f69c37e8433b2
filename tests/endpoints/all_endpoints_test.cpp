#include "support/EndpointMaking.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>

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
    using Note = std::function<void(const std::optional<Error>&)>;

    /// A call that is sent, and its handle where it gives one.
    struct Call {
        const char* name;
        std::function<std::shared_ptr<EndpointRequest>(Note)> send;
    };

    /// A completion that has its value, or its error in the place of it.
    template <class Value>
    static auto notingValue(Note note) {
        return [note = std::move(note)](const Value& value, const std::optional<Error>& error) {
            EXPECT_EQ(value == Value(), error.has_value());
            note(error);
        };
    }
    /// A completion that has a result.
    static auto notingResult(Note note) {
        return [note = std::move(note)](const auto& result) {
            EXPECT_NE(result.success() ? true : false, result.error() != nullptr);
            note(result.error() ? std::optional(*result.error()) : std::nullopt);
        };
    }

    std::vector<Call> calls() {
        const auto upload = LongformUploadEndpoint::create();
        const auto views = LongformViewsEndpoint::create("1");
        const auto feedback = RecommendationsEndpoint::create();
        constexpr auto noting = [](Note note) { return notingResult(std::move(note)); };
        constexpr auto notingUpload = notingValue<std::shared_ptr<KLVideoUpload>>;
        constexpr auto notingViews = notingValue<std::shared_ptr<KLLongformViews>>;
        constexpr auto notingSounds = notingValue<std::vector<std::shared_ptr<SoundboardSound>>>;
        const auto without = [](const std::function<void(Note)>& send) {
            return [send](Note note) {
                send(std::move(note));
                return nullptr;
            };
        };
        return {
            {"me", without([=](Note note) { MeEndpoint::create()->get(noting(note)); })},
            {"follow", without([=](Note note) {
                 UserEndpoint::create("1")->setFollowingOnTwitter(true, noting(note));
             })},
            {"timeline",
             without([=](Note note) { TimelineEndpoint::create("a")->fetch(noting(note)); })},
            {"like", without([=, this](Note note) {
                 LikeActionEndpoint::create(post)->toggle(true, noting(note));
             })},
            {"rekelo", without([=, this](Note note) {
                 RekeloActionEndpoint::create(post)->toggle(true, noting(note));
             })},
            {"post feedback", without([=](Note note) {
                 feedback->addPostFeedback("1", RecommendationBoost::Positive, noting(note));
             })},
            {"user feedback", without([=](Note note) {
                 feedback->addUserFeedback("1", RecommendationBoost::Positive, noting(note));
             })},
            {"sounds",
             [=, this](Note note) {
                 return SoundboardEndpoint::create(session)->fetchSounds(notingSounds(note));
             }},
            {"views", [=](Note note) { return views->fetchViews(notingViews(note)); }},
            {"a view", [=](Note note) { return views->submitView(note); }},
            {"initiate", [=](Note note) { return upload->initiateUpload(1, notingUpload(note)); }},
            {"segment", [=](Note note) { return upload->uploadSegment("1", Data("a"), 0, note); }},
            {"finalize",
             [=](Note note) { return upload->finalizeUpload("1", notingUpload(note)); }},
            {"status", [=](Note note) { return upload->checkStatus("1", notingUpload(note)); }},
        };
    }

    std::shared_ptr<KLWatchPost> post = std::make_shared<KLWatchPost>();
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
    for (const Call& call : calls()) {
        SCOPED_TRACE(call.name);
        std::vector<Error> errors;
        const auto send = [&] {
            return call.send([&](const auto& error) { errors.push_back(error.value()); });
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
    for (const Call& call : calls()) {
        const std::string name = call.name;
        if (name != "follow" && name != "post feedback" && name != "a view") {
            continue;
        }
        for (const auto& [body, reason] :
             {std::pair(R"({"data": {"longformId": 5, "anything": [1, 2]}})", ""),
              std::pair(R"({"data": {"records": [{}, {"x": 1}]}})", ""),
              std::pair(R"({"data": []})", "Malformed data section in response"),
              std::pair(R"({"data": 5})", "Malformed data section in response")}) {
            transport->answer(fakes::ScriptedAnswer::json(body));
            std::optional<std::string> outcome;
            call.send(
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
