#include "support/Awaited.hpp"
#include "support/EndpointCalls.hpp"
#include "support/KeyTable.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/internal/completeUpload.hpp>
#include <KeloAPI/endpoints/internal/decimalText.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <cstdlib>
#include <random>

namespace KeloAPI::testing {

using fakes::ScriptedAnswer;

// The signed-in user

class MeEndpointTest : public RegistrySessionTest {
protected:
    MeResult get(const std::string& body) {
        transport->answer(ScriptedAnswer::json(body));
        return awaited<MeResult>([this](auto completion) { endpoint->get(completion); });
    }

    std::shared_ptr<MeEndpoint> endpoint = MeEndpoint::create();
};

TEST_F(MeEndpointTest, TakesTheFirstOfSeveralUsersAndPassesEveryErrorOn) {
    EXPECT_EQ(endpoint->path(), "users/me");
    EXPECT_EQ(endpoint->method(), Method::GET);
    EXPECT_TRUE(endpoint->parameters().empty());
    const auto result = get(R"({"data": {"records": [{"username": "a"}, {"username": "b"}]}})");
    ASSERT_TRUE(result.success());
    EXPECT_EQ(result.success()->user->username, "a");
    for (const int code : {100, 230, 231, 900}) {
        const auto failed = get(R"({"error": "no", "code": )" + std::to_string(code) + "}");
        ASSERT_TRUE(failed.error());
        EXPECT_EQ(failed.error()->code(), code);
    }
}

TEST_F(MeEndpointTest, AnAnswerWithoutUserStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a forked child has no session of its own
    for (const char* body : {R"({"data": {}})", R"({"data": {"records": []}})"}) {
        EXPECT_DEATH(get(body), "contract violated: users/me returned no user");
    }
}

// Another user

class UserEndpointTest : public RegistrySessionTest {
protected:
    UserResult follow(const ScriptedAnswer& answer) {
        transport->answer(answer);
        return awaited<UserResult>(
            [this](auto completion) { endpoint->setFollowingOnTwitter(true, completion); });
    }

    std::shared_ptr<UserEndpoint> endpoint = UserEndpoint::create("123");
};

TEST_F(UserEndpointTest, MadeOfASessionAloneItHasNoUser) {
    EXPECT_EQ(endpoint->userId(), "123");
    EXPECT_TRUE(endpoint->parameters().empty());
    endpoint = UserEndpoint::create(session);
    EXPECT_EQ(endpoint->session(), session);
    EXPECT_EQ(endpoint->userId(), "");
    EXPECT_TRUE(follow(ScriptedAnswer::json(R"({"data": {}})")).success());
    EXPECT_EQ(lastRequest().url->absoluteString(),
              "https://service.example/users//follow-on-twitter");
}

TEST_F(UserEndpointTest, FollowingAndItsEndArePostedUnderThePathOfTheUser) {
    endpoint->setFollowingOnTwitter(true, [](const UserResult&) {});
    EXPECT_EQ(lastRequest().method, Method::POST);
    EXPECT_EQ(lastRequest().url->path(), "/users/123/follow-on-twitter");
    endpoint->setFollowingOnTwitter(false, [](const UserResult&) {});
    EXPECT_EQ(lastRequest().method, Method::POST);
    EXPECT_EQ(lastRequest().url->path(), "/users/123/unfollow-on-twitter");
}

TEST_F(UserEndpointTest, Codes230And231OfTheServiceCountAsSuccessAndOthersArePassedOn) {
    for (const int code : {-1, 0, 100, 229, 230, 231, 232}) {
        const auto result = follow(
            ScriptedAnswer::json(R"({"error": "no", "code": )" + std::to_string(code) + "}"));
        const bool succeeds = code == 230 || code == 231;
        ASSERT_EQ(result.success() != nullptr, succeeds) << code;
        EXPECT_EQ(succeeds ? code : result.error()->code(), code);
    }
    EXPECT_EQ(delegate->reauthCount, 1);
    // An error of another domain may have the same number.
    EXPECT_TRUE(follow(ScriptedAnswer::failure(Error("KeloAPI.HTTP", 230))).error());
}

TEST_F(UserEndpointTest, ARefusedSessionIsHandedOverBeforeTheCompletion) {
    std::vector<std::string> events;
    delegate->onReauth = [&](Session&) { events.emplace_back("delegate"); };
    transport->answer(ScriptedAnswer::json(R"({"error": "no", "code": 103})"));
    transport->answer(ScriptedAnswer::json(R"({"error": "already", "code": 230})"));
    endpoint->setFollowingOnTwitter(true, [&](const UserResult& result) {
        events.emplace_back(result.success() ? "success" : "error");
    });
    ASSERT_TRUE(runUntil([&] { return events.size() == 2; }));
    session->handleQueuedRetries(true);
    ASSERT_TRUE(runUntil([&] { return events.size() == 3; }));
    EXPECT_EQ(events, (std::vector<std::string>{"delegate", "error", "success"}));
}

// Sounds

class SoundboardEndpointTest : public RegistrySessionTest {
protected:
    void fetch(const std::string& body) {
        transport->answer(ScriptedAnswer::json(body));
        std::tie(sounds, error) =
            awaited<std::vector<std::shared_ptr<SoundboardSound>>, std::optional<Error>>(
                [this](auto completion) { endpoint->fetchSounds(completion); });
    }

    std::shared_ptr<SoundboardEndpoint> endpoint = SoundboardEndpoint::create(session);
    std::vector<std::shared_ptr<SoundboardSound>> sounds;
    std::optional<Error> error;
};

TEST_F(SoundboardEndpointTest, ReadsAllSoundsWithoutParametersWhateverWasSetBefore) {
    EXPECT_EQ(endpoint->path(), "/soundboard");
    endpoint->setParameters({{"page", 2}});
    endpoint->setParameterEncoding(ParameterEncoding::JSON);
    endpoint->setMethod(Method::POST);
    fetch(R"({"data": {"records": [{"soundId": 7, "name": "Airhorn"}, {"soundId": "x"}]}})");
    EXPECT_EQ(lastRequest().url->absoluteString(), "https://service.example/soundboard");
    EXPECT_EQ(lastRequest().method, Method::GET);
    EXPECT_EQ(lastBody(), "none");
    EXPECT_FALSE(error);
    ASSERT_EQ(sounds.size(), 2U);
    EXPECT_EQ(sounds[0]->soundId, "7");
    EXPECT_EQ(sounds[0]->name, "Airhorn");
    EXPECT_EQ(sounds[1]->soundId, "x");
    fetch(R"({"data": {"records": []}})");
    EXPECT_TRUE(sounds.empty());
    EXPECT_FALSE(error);
}

TEST_F(SoundboardEndpointTest, OneSoundWithoutIdentifierFailsTheCall) {
    fetch(R"({"data": {"records": [{"soundId": "x"}, {"name": "y"}]}})");
    EXPECT_TRUE(sounds.empty());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription(), "Unable to parse posts from response");
    EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData);
}

// Loops

class LoopsEndpointTest : public RegistrySessionTest {
protected:
    LoopsEndpointTest() { post->postId = "1234567890"; }

    /// The one record of the last body; checks what surrounds it.
    std::map<std::string, std::string> lastRecord() const {
        const JsonText body(lastBody());
        EXPECT_EQ(body.object().size(), 1U);
        const auto loops = *body["loops"].objects();
        EXPECT_EQ(loops.size(), 1U);
        std::map<std::string, std::string> record;
        for (const auto& [key, value] : *loops.begin()) {
            record.emplace(key, value.description());
        }
        return record;
    }
    /// The line that tells of the only report since the last.
    std::string nextLine() {
        EXPECT_TRUE(runUntil([&] { return !lines.empty(); }));
        EXPECT_EQ(lines.size(), 1U);
        return std::exchange(lines, {}).front();
    }

    std::shared_ptr<LoopsEndpoint> endpoint = LoopsEndpoint::create();
    const std::shared_ptr<KLWatchPost> post = std::make_shared<KLWatchPost>();
};

TEST_F(LoopsEndpointTest, APostWithoutIdentifierSendsNothing) {
    EXPECT_EQ(endpoint->path(), "loops");
    EXPECT_EQ(endpoint->method(), Method::POST);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::JSON);
    EXPECT_TRUE(endpoint->parameters().empty());
    post->postId.reset();
    endpoint->submit(5, post);
    endpoint->submit(5, nullptr);
    EXPECT_TRUE(transport->requests().empty());
    passThrough();
    EXPECT_TRUE(lines.empty());
}

TEST_F(LoopsEndpointTest, EachCallIsARequestOfItsOwnWithCountAndIdentifierAsGiven) {
    std::size_t calls = 0;
    for (const char* id : {"1234567890", "2", ""}) {
        post->postId = id;
        for (const std::int64_t count : {std::int64_t{0}, std::int64_t{-3}, INT64_MAX, INT64_MIN}) {
            endpoint->submit(count, post);
            EXPECT_EQ(transport->requests().size(), ++calls);
            EXPECT_EQ(lastRecord().at("count"), std::to_string(count));
            EXPECT_EQ(lastRecord().at("postId"), id);
        }
    }
}

TEST_F(LoopsEndpointTest, AReportOutlivesItsEndpointAndEndsWithALineWhateverComesOfIt) {
    transport->answer(ScriptedAnswer::json(R"({"error": "no", "code": 100})"));
    endpoint->submit(1, post);
    EXPECT_EQ(nextLine(), "Submitted loops with error: nil");
    transport->answer(ScriptedAnswer::failure(Error("KeloAPI.HTTP", 5)));
    endpoint->submit(1, post);
    EXPECT_TRUE(nextLine().starts_with("Submitted loops with error: KeloAPI.HTTP 5"));
    EXPECT_EQ(delegate->reauthCount, 0);
    EXPECT_EQ(session->queuedRetryCount(), 0U);
    endpoint->submit(5, post);
    const std::weak_ptr<LoopsEndpoint> watched = endpoint;
    endpoint.reset();
    transport->answer(ScriptedAnswer::json(R"({"data": {}})"));
    EXPECT_EQ(nextLine(), "Submitted loops with error: nil");
    EXPECT_TRUE(runUntil([&] { return watched.expired(); }));
}

// Feedback

class RecommendationsEndpointTest : public RegistrySessionTest {
protected:
    std::shared_ptr<RecommendationsEndpoint> endpoint = RecommendationsEndpoint::create();
};

TEST_F(RecommendationsEndpointTest, SetsMethodAndEncodingOnceOnly) {
    EXPECT_EQ(endpoint->method(), Method::POST);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::JSON);
    EXPECT_EQ(endpoint->path(), "");
    endpoint->setMethod(Method::PUT);
    endpoint->setParameterEncoding(ParameterEncoding::URL);
    endpoint->addUserFeedback("9", RecommendationBoost::Neutral, {});
    EXPECT_EQ(lastRequest().method, Method::PUT);
    EXPECT_EQ(endpoint->parameterEncoding(), ParameterEncoding::URL);
    // The identifier stands in the path as it is given.
    endpoint->addUserFeedback("a/b c?", RecommendationBoost::Neutral, {});
    EXPECT_EQ(endpoint->path(), "recommendations/feedback/users/a/b c?");
    endpoint->addPostFeedback("", RecommendationBoost::Neutral, {});
    EXPECT_EQ(endpoint->path(), "recommendations/feedback/posts/");
}

TEST_F(RecommendationsEndpointTest, WithoutCompletionSendsAndReportsNothing) {
    for (const char* answer : {R"({"error": "no", "code": 5})", R"({"data": {}})"}) {
        transport->answer(ScriptedAnswer::json(answer));
        auto own = RecommendationsEndpoint::create();
        const std::weak_ptr<RecommendationsEndpoint> watched = own;
        own->addPostFeedback("1", RecommendationBoost::Positive, {});
        own.reset();
        EXPECT_FALSE(watched.expired());
        // A call keeps its endpoint until its answer has been dealt with.
        EXPECT_TRUE(runUntil([&] { return watched.expired(); })) << answer;
        EXPECT_EQ(transport->waitingCount(), 0U);
    }
    EXPECT_EQ(transport->requests().size(), 2U);
}

TEST(RecommendationBoost, IsReadToTheLetter) {
    EXPECT_EQ(recommendationBoostOf("positive"), RecommendationBoost::Positive);
    EXPECT_EQ(recommendationBoostOf("neutral"), RecommendationBoost::Neutral);
    EXPECT_EQ(recommendationBoostOf("negative"), RecommendationBoost::Negative);
    for (const char* text : {"Positive", "", "positive ", "NEGATIVE"}) {
        EXPECT_EQ(recommendationBoostOf(text), std::nullopt) << text;
    }
    EXPECT_EQ(rawValue(RecommendationBoost::Positive), "positive");
}

// Views

using LongformViewsEndpointTest = RegistrySessionTest;

TEST_F(LongformViewsEndpointTest, TheFirstItemCountsAndNoneIsNoError) {
    const auto idIn = [this](const char* body) {
        transport->answer(ScriptedAnswer::json(body));
        const auto [views, error] = awaited<std::shared_ptr<KLLongformViews>, std::optional<Error>>(
            [](auto completion) { LongformViewsEndpoint::create("abc")->fetchViews(completion); });
        return views ? views->longformId : error ? std::to_string(error->code()) : "";
    };
    EXPECT_EQ(idIn(R"({"data": {"records": [{"longformId": "a", "count": 1},
                                            {"longformId": "b", "count": 2}]}})"),
              "a");
    EXPECT_EQ(idIn(R"({"data": {}})"), "");
    EXPECT_EQ(idIn(R"({"data": {}, "error": "no", "code": 3})"), "3");
}

TEST_F(LongformViewsEndpointTest, AViewIsPostedWithItsInstantWhichNoFetchCarries) {
    const auto endpoint = LongformViewsEndpoint::create("abc");
    const double before = timeIntervalSince1970(Date::now());
    endpoint->submitView([](const auto&) {});
    EXPECT_EQ(lastRequest().method, Method::POST);
    EXPECT_EQ(lastRequest().url->absoluteString(), "https://service.example/longforms/abc/views");
    const JsonText body(lastBody());
    EXPECT_EQ(body.object().size(), 1U);
    const auto instant = body["timestamp"].text();
    ASSERT_TRUE(instant);
    EXPECT_NE(instant->find('.'), std::string_view::npos);
    EXPECT_GE(std::stod(std::string(*instant)), before);
    EXPECT_LE(std::stod(std::string(*instant)), timeIntervalSince1970(Date::now()));
    endpoint->fetchViews([](const auto&, const auto&) {});
    EXPECT_EQ(lastRequest().method, Method::GET);
    EXPECT_EQ(lastRequest().url->absoluteString(), "https://service.example/longforms/abc/views");
    EXPECT_EQ(lastBody(), "none");
}

static_assert(!std::is_default_constructible_v<KLLongformViews>);
static_assert(std::is_constructible_v<KLLongformViews, const char*, int>);

TEST(LongformViewsParser, EveryKeyWithEveryKindOfValue) {
    using V = KLLongformViews;
    Reads counts = integers();
    counts["9223372036854775807"] = "9223372036854775807";
    const auto required = fails(insufficient);
    checkParser<KLLongformViewsParser>(
        {{"longformId", R"("abc")", "abc", &V::longformId, texts(), required},
         {"count", "12.9", "12", &V::count, counts, required}});
}

TEST(DecimalText, HasAPointAndNoExponentAndReadsBackAsTheSameNumber) {
    EXPECT_EQ(decimalText(1447545600.25), "1447545600.25");
    EXPECT_EQ(decimalText(1447545600), "1447545600.0");
    EXPECT_EQ(decimalText(0), "0.0");
    EXPECT_EQ(decimalText(1e22), "10000000000000000000000.0");
    EXPECT_EQ(decimalText(1e-7), "0.0000001");
    EXPECT_EQ(decimalText(-0.5), "-0.5");
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> instants(0, 4e9);
    for (int i = 0; i < 10000; ++i) {
        const double value = instants(random);
        const std::string text = decimalText(value);
        ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
    }
}

class LongformUploadEndpointTest : public RegistrySessionTest {
protected:
    using Answer = std::tuple<std::shared_ptr<KLVideoUpload>, std::optional<Error>>;

    Answer status(const std::string& body) {
        transport->answer(fakes::ScriptedAnswer::json(body));
        return awaited<std::shared_ptr<KLVideoUpload>, std::optional<Error>>(
            [this](auto completion) { endpoint->checkStatus("m-1", completion); });
    }

    std::shared_ptr<LongformUploadEndpoint> endpoint = LongformUploadEndpoint::create();
};

TEST_F(LongformUploadEndpointTest, PassesAnySegmentOnWithoutCopyingIt) {
    const auto ignore = [](const std::optional<Error>&) {};
    const auto owner = std::make_shared<std::string>(1'000'000, 's');
    const Data data(owner, std::as_bytes(std::span(owner->data(), owner->size())));
    endpoint->uploadSegment("m-1", data, 0, ignore);
    EXPECT_EQ(lastRequest().body->bytes().data(), data.bytes().data());
    EXPECT_EQ(lastRequest().method, Method::PUT);
    EXPECT_EQ(lastRequest().url->absoluteString(),
              "https://service.example/upload/longform-videos/m-1?segmentIndex=0");
    EXPECT_EQ(lastRequest().headerFields.at("Content-Type"), "application/octet-stream");
    endpoint->uploadSegment("m-1", Data(), -3, ignore);
    EXPECT_EQ(lastRequest().url->query(), "segmentIndex=-3");
    EXPECT_EQ(lastBody(), "");
    // Nothing of it stays with the call that follows.
    endpoint->finalizeUpload("m-1", [](const auto&, const auto&) {});
    EXPECT_EQ(lastRequest().method, Method::POST);
    EXPECT_EQ(lastRequest().url->absoluteString(),
              "https://service.example/upload/longform-videos/m-1");
    EXPECT_FALSE(lastRequest().body);
    EXPECT_EQ(lastRequest().headerFields.count("content-type"), 0U);
}

TEST_F(LongformUploadEndpointTest, BeginsWithTheSizeAndAsksForTheStatusWithoutIt) {
    endpoint->initiateUpload(12345, [](const auto&, const auto&) {});
    EXPECT_EQ(lastRequest().method, Method::POST);
    EXPECT_EQ(lastRequest().url->absoluteString(), "https://service.example/upload/longform-videos"
                                                   "?mediaType=video%2Fmp4&totalBytes=12345");
    endpoint->checkStatus("m-1", [](const auto&, const auto&) {});
    EXPECT_EQ(lastRequest().method, Method::GET);
    EXPECT_EQ(lastRequest().url->absoluteString(),
              "https://service.example/upload/longform-videos/m-1/status");
}

TEST_F(LongformUploadEndpointTest, HasNoUploadWhereItIsIncomplete) {
    for (const char* body :
         {R"({"data": {"processingInfo": {"state": "pending"}}})",
          R"({"data": {"mediaId": "m-1", "processingInfo": {"state": "done"}}})"}) {
        const auto [upload, error] = status(body);
        EXPECT_EQ(upload, nullptr) << body;
        ASSERT_TRUE(error) << body;
        EXPECT_EQ(error->code(), -1) << body;
        ASSERT_TRUE(error->underlying()) << body;
        EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData) << body;
    }
    EXPECT_EQ(status(R"({"data": {"records": []}})"), Answer()) << "nor an error";
}

TEST_F(LongformUploadEndpointTest, TakesTheFirstUploadAndDropsAnErrorBesideIt) {
    Answer answer;
    const auto note = [&](std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error) {
        answer = {std::move(upload), std::move(error)};
    };
    const auto first = std::make_shared<KLVideoUpload>("1");
    completeUpload(first, Error("test", 1), note);
    EXPECT_EQ(answer, Answer(first, {}));
    completeUpload(nullptr, Error("test", 1), note);
    EXPECT_EQ(std::get<0>(answer), nullptr);
    EXPECT_EQ(std::get<1>(answer)->code(), 1);
}

} // namespace KeloAPI::testing
