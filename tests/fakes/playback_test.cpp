#include "CassetteTest.hpp"
#include "support/FreshManager.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/fakes/ManualClock.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

namespace KeloAPI::testing {

using fakes::Cassette;
using fakes::CassetteErrorCode;
using fakes::Playback;
using fakes::PlaybackTransport;
using fakes::ScriptedAnswer;
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PlaybackTest : public CassetteTest {
protected:
    /// Plays what has been recorded, as a reader of the file has it.
    void play(Playback playback) {
        const auto read = Cassette::parse(cassette->text());
        ASSERT_TRUE(read) << read.error().description();
        transport = std::make_shared<PlaybackTransport>(read.value(), playback);
        player = std::make_shared<Manager>(transport);
    }
    /// The body of what comes, or the error's text.
    std::string played(const FixedRequest& request) {
        const HeardAnswer answer = send(*player, request);
        return answer.error ? answer.error->localizedDescription() : answer.body;
    }

    std::shared_ptr<PlaybackTransport> transport;
    std::shared_ptr<Manager> player;
};

TEST_F(PlaybackTest, StrictlyTakesTheRecordedOrder) {
    record(get("https://h/a"), ScriptedAnswer::json("1"));
    record(post("https://h/a", "x"), ScriptedAnswer::json("2"));
    record(get("https://h/a"), ScriptedAnswer::json("3"));
    play(Playback::Strict);
    EXPECT_EQ(transport->unplayedCount(), 3U);
    EXPECT_EQ(played(get("https://h/a")), "1");
    EXPECT_EQ(played(post("https://h/a", "x")), "2");
    EXPECT_EQ(transport->unplayedCount(), 1U);
    EXPECT_EQ(played(get("https://h/a")), "3");
    EXPECT_EQ(transport->unplayedCount(), 0U);
    EXPECT_THAT(transport->unexpectedRequests(), IsEmpty());
}

TEST_F(PlaybackTest, StrictlySaysWhatWasExpectedAndWhatCame) {
    record(post("https://h/a", "{\"b\":1}"), ScriptedAnswer::json("1"));
    play(Playback::Strict);
    const std::string head = "exchange 1: expected POST https://h/a";
    const std::pair<FixedRequest, std::string> table[] = {
        {get("https://h/a"), head + ", came GET https://h/a"},
        {post("https://h/b", "{\"b\":1}"), head + ", came POST https://h/b"},
        {post("https://h/a?token=mine", ""), head + ", came POST https://h/a?token=BLANKED"},
        {post("https://h/a", "{\"b\":2}"), head + " with the body '{\"b\":1}', came '{\"b\":2}'"},
        {post("https://h/a", std::string(400, 'x')),
         head + " with the body '{\"b\":1}', came '" + std::string(300, 'x') + "' and more"},
        {post("https://h/a", "\xFF"), head + " with the body '{\"b\":1}', came 1 bytes"},
        {post("https://h/a", std::string(2000, 'x')),
         head + " with the body '{\"b\":1}', came 2000 bytes"},
    };
    std::vector<std::string> said;
    for (const auto& [request, text] : table) {
        const HeardAnswer answer = send(*player, request);
        ASSERT_TRUE(answer.error) << text;
        EXPECT_EQ(answer.error->domain(), fakes::CassetteErrorDomain);
        EXPECT_EQ(answer.error->code(),
                  static_cast<std::int64_t>(CassetteErrorCode::UnexpectedRequest));
        EXPECT_EQ(answer.error->localizedDescription(), text);
        said.push_back(text);
    }
    // The expected one is still waited for; behind it nothing is.
    EXPECT_EQ(played(post("https://h/a", "{\"b\":1}")), "1");
    said.push_back("behind the last of 1 exchanges came GET https://h/c");
    EXPECT_EQ(played(get("https://h/c")), said.back());
    EXPECT_EQ(transport->unexpectedRequests(), said);
}

TEST_F(PlaybackTest, ByRouteTakesAnyOrderHostAndBodyAndRepeatsTheLast) {
    record(get("https://h/a?size=1"), ScriptedAnswer::json("1"));
    record(post("https://h/a?size=1", "x"), ScriptedAnswer::json("2"));
    record(get("https://h/a?size=1"), ScriptedAnswer::json("3"));
    record(get("https://h/a"), ScriptedAnswer::json("4"));
    play(Playback::ByRoute);
    EXPECT_EQ(played(get("https://other:1/a")), "4");
    EXPECT_EQ(played(post("https://h/a?size=1", "y")), "2");
    EXPECT_EQ(played(get("http://h/a?size=1")), "1");
    EXPECT_EQ(transport->unplayedCount(), 1U);
    EXPECT_EQ(played(get("https://h/a?size=1")), "3");
    EXPECT_EQ(played(get("https://h/a?size=1")), "3");
    EXPECT_EQ(played(get("https://h/a")), "4");
    EXPECT_EQ(transport->unplayedCount(), 0U);
    const std::string said = "expected GET /a or GET /a?size=1 or POST /a?size=1, came GET /b";
    EXPECT_EQ(played(get("https://h/b")), said);
    EXPECT_THAT(transport->unexpectedRequests(), ElementsAre(said));
}

TEST_F(PlaybackTest, ByRouteNamesTenRoutes) {
    for (int number = 0; number < 12; ++number) {
        record(get("https://h/" + std::to_string(number)), ScriptedAnswer::json("{}"));
    }
    play(Playback::ByRoute);
    EXPECT_THAT(played(get("https://h/b")), HasSubstr(" or one of 2 more, came GET /b"));
}

TEST_F(PlaybackTest, TakesOtherSecretsThanTheRecordedOnes) {
    cassette->addSecretName("device");
    const auto signIn = [](const char* user, const char* password) {
        return post("https://h/sessions?device=" + std::string(user),
                    R"({"username":")" + std::string(user) + R"(","password":")" + password +
                        "\"}");
    };
    record(signIn("mara", "pass-w0rd-1"), ScriptedAnswer::json(R"({"data":{"key":"k3y-k3y-1"}})"));
    FixedRequest state = get("https://h/sessions/k3y-k3y-1?token=t0k3n-t0k3n");
    state.request.headerFields = {{"kelo-session-id", "k3y-k3y-1"}};
    record(state, ScriptedAnswer::json("1"));
    FixedRequest own = get("https://h/sessions/0wn-k3y-2?token=0th3r");
    own.request.headerFields = {{"kelo-session-id", "0wn-k3y-2"}};
    for (const Playback playback : {Playback::Strict, Playback::ByRoute}) {
        play(playback);
        EXPECT_EQ(played(signIn("kofi", "other")), R"({"data":{"key":"BLANKED"}})");
        EXPECT_EQ(played(own), "1");
    }
}

TEST_F(PlaybackTest, StrictlyTakesTheTimeStampsOfTheSameInstant) {
    const auto session = Api::session(SessionType::Authenticated);
    std::vector<std::string> lines;
    Diagnostics::setSink([&](std::string_view line) { lines.emplace_back(line); });
    const auto submit = [&](const std::shared_ptr<Manager>& manager, std::chrono::seconds late) {
        const fakes::ManualClock clock(Date(std::chrono::hours(1) + late));
        session->setSessionManager(manager);
        const auto post = std::make_shared<KLWatchPost>();
        post->postId = "7";
        const std::size_t before = lines.size();
        LoopsEndpoint::create()->submit(3, post);
        EXPECT_TRUE(runUntil([&] { return lines.size() > before; }));
        return lines.back();
    };
    service->answer(ScriptedAnswer::json(R"({"data":{}})"));
    const auto recording = std::make_shared<fakes::RecordingTransport>(service, cassette);
    const std::string submitted = "Submitted loops with error: nil";
    EXPECT_EQ(submit(std::make_shared<Manager>(recording), 0s), submitted);
    play(Playback::Strict);
    EXPECT_THAT(submit(player, 1s), HasSubstr("\"ts\":3600}]}', came "));
    EXPECT_EQ(submit(player, 0s), submitted);
    renewManager(*session);
    Diagnostics::setSink({});
}

TEST_F(PlaybackTest, PlaysHeadsAndErrors) {
    ScriptedAnswer redirected{404, {{"X-A", "b"}}, "gone", {}};
    redirected.url = URL::parse("https://other/b");
    redirected.expectedContentLength = -1;
    record(get("https://h/1"), redirected);
    ScriptedAnswer broken = ScriptedAnswer::json("{\"a\":");
    broken.error = httpError(HTTPErrorCode::ConnectionLost, "broke off");
    record(get("https://h/2"), broken);
    record(get("https://h/3"), ScriptedAnswer::failure(httpError(HTTPErrorCode::TimedOut, "slow")));
    play(Playback::Strict);
    std::optional<HTTPResponse> head;
    player->request(get("https://h/1"))->response([&](const ResponseContent& content, Timeline) {
        return [&head, response = content.response] { head = response; };
    });
    ASSERT_TRUE(runUntil([&] { return head.has_value(); }));
    EXPECT_EQ(head->url, URL::parse("https://other/b"));
    EXPECT_EQ(head->statusCode, 404);
    EXPECT_EQ(head->headerFields, (HeaderFields{{"X-A", "b"}}));
    EXPECT_EQ(head->expectedContentLength, -1);
    const HeardAnswer lost = send(*player, get("https://h/2"));
    EXPECT_EQ(lost.status, 200);
    EXPECT_TRUE(lost.failedWith(HTTPErrorCode::ConnectionLost));
    EXPECT_TRUE(send(*player, get("https://h/3")).failedWith(HTTPErrorCode::TimedOut));
}

TEST_F(PlaybackTest, KeepsOnlyLengthAndHashOfLongBodies) {
    const std::string longest(1000, 'a');
    const std::string tooLong(1001, 'a');
    record(post("https://h/1", tooLong), ScriptedAnswer::json(longest));
    record(get("https://h/2"), ScriptedAnswer::json(tooLong));
    EXPECT_LT(cassette->text().size(), 2500U);
    play(Playback::Strict);
    EXPECT_THAT(played(post("https://h/1", std::string(1001, 'b'))), HasSubstr("came 1001 bytes"));
    EXPECT_EQ(played(post("https://h/1", tooLong)), longest);
    const HeardAnswer lost = send(*player, get("https://h/2"));
    ASSERT_TRUE(lost.error);
    EXPECT_EQ(lost.error->code(), static_cast<std::int64_t>(CassetteErrorCode::BodyNotKept));
    EXPECT_EQ(lost.error->localizedDescription(),
              "the response to GET https://h/2 has 1001 bytes, more than the cassette has kept");
}

TEST_F(PlaybackTest, DownloadsIntoFiles) {
    record(get("https://h/video"), {200, {}, "\xFF\x01video", {}});
    play(Playback::ByRoute);
    HeardAnswers answers;
    const std::string file = folder.path("video");
    answers.listenTo(player->download(get("https://h/video"), URL::fileURL(file)));
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(contentsOf(file), "\xFF\x01video");
}

TEST_F(PlaybackTest, GivesEachOfManyThreadsItsOwn) {
    constexpr int count = 40;
    for (int number = 0; number < count; ++number) {
        record(get("https://h/" + std::to_string(number)),
               ScriptedAnswer::json(std::to_string(number)));
    }
    play(Playback::ByRoute);
    std::vector<std::shared_ptr<Request>> requests(count);
    std::vector<std::thread> threads;
    for (int first = 0; first < 4; ++first) {
        threads.emplace_back([&, first] {
            for (int number = first; number < count; number += 4) {
                requests[static_cast<std::size_t>(number)] =
                    player->request(get("https://h/" + std::to_string(number)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::vector<std::string> bodies;
    for (const auto& request : requests) {
        HeardAnswers answers;
        answers.listenTo(request);
        ASSERT_TRUE(answers.waitFor(1));
        EXPECT_EQ(answers[0].body, std::to_string(bodies.size()));
        bodies.push_back(answers[0].body);
    }
    EXPECT_EQ(transport->unplayedCount(), 0U);
}

TEST(PlaybackDeathTest, NeedsACassette) {
    EXPECT_DEATH(PlaybackTransport(nullptr, Playback::Strict), "a playback needs a cassette");
}

} // namespace KeloAPI::testing
