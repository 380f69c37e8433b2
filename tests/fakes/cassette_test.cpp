#include "CassetteTest.hpp"
#include "support/ManualTransport.hpp"

#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/TrafficObserver.hpp>

namespace KeloAPI::testing {

using fakes::Cassette;
using fakes::CassetteErrorCode;
using fakes::ScriptedAnswer;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(CassetteTest, IsJsonThatReadsWell) {
    FixedRequest request = post("https://h/a?b=c", R"({"size":5,"list":[1,{}],"none":[]})");
    request.request.headerFields = {{"Content-Type", "application/json"}};
    record(request, ScriptedAnswer::json(R"({"data":{"caption":"\"caf)"
                                         "\xC3\xA9"
                                         R"(\""}})"));
    EXPECT_EQ(cassette->text(), R"({
  "cassetteVersion": 1,
  "secretNames": [],
  "maxBodyBytes": 1000,
  "exchanges": [
    {
      "request": {
        "method": "POST",
        "url": "https://h/a?b=c",
        "headerFields": {
          "Content-Type": "application/json"
        },
        "json": {
          "size": 5,
          "list": [
            1,
            {}
          ],
          "none": []
        }
      },
      "response": {
        "status": 200,
        "headerFields": {
          "Content-Type": "application/json"
        },
        "json": {
          "data": {
            "caption": "\"caf)"
                                "\xC3\xA9"
                                R"(\""
          }
        }
      }
    }
  ]
}
)");
    EXPECT_EQ(readAndWritten(cassette->text()), cassette->text());
    record(get("https://h/a"), ScriptedAnswer::json("[7]"));
    EXPECT_THAT(cassette->text(), HasSubstr("\"json\": [\n          7\n        ]"));
}

TEST_F(CassetteTest, KeepsEveryBodyByteForByte) {
    const std::string deep = std::string(1015, '[') + std::string(1015, ']');
    const std::string bodies[] = {"",
                                  "{}",
                                  "[]",
                                  "{\"a\":1}",
                                  "{ \"a\": 1 }",
                                  "{\"a\":1.0}",
                                  "{\"a\":1e3,\"b\":1.50}",
                                  "{\"a\":123456789012345678901234567890}",
                                  "{\"a\":\"\\u00e9\\/\"}",
                                  "{\"a\":1,\"a\":2}",
                                  "{\"a\":",
                                  "\xEF\xBB\xBF{\"a\":1}",
                                  "plain\r\ntext\t\x01\x7F \"quoted\" \\",
                                  "text",
                                  "\xFF\xFE binary",
                                  std::string("\0\0", 2),
                                  deep.substr(0, 999),
                                  deep.substr(1015 - 490, 980)};
    for (const std::string& body : bodies) {
        record(post("https://h/a", body), {200, {}, body, {}});
    }
    EXPECT_EQ(readAndWritten(cassette->text()), cassette->text());
    const auto read = Cassette::parse(cassette->text());
    ASSERT_TRUE(read) << read.error().description();
    Manager player(
        std::make_shared<fakes::PlaybackTransport>(read.value(), fakes::Playback::Strict));
    for (const std::string& body : bodies) {
        const HeardAnswer answer = send(player, post("https://h/a", body));
        EXPECT_FALSE(answer.error) << answer.error->description();
        EXPECT_EQ(answer.body, body);
    }
}

TEST_F(CassetteTest, KeepsHeadsAndErrors) {
    ScriptedAnswer redirected{301, {{"X-A", "\xE4"}, {"Empty", ""}}, "moved", {}};
    redirected.url = URL::parse("https://other/b");
    redirected.expectedContentLength = -1;
    record(get("https://h/1"), redirected);
    ScriptedAnswer broken = ScriptedAnswer::json("{\"a\":");
    broken.error = httpError(HTTPErrorCode::ConnectionLost, "gone", Error("libcurl", 56));
    record(get("https://h/2"), broken);
    record(get("https://h/3"), ScriptedAnswer::failure(Error("d", -7)));
    const std::string text = cassette->text();
    EXPECT_EQ(readAndWritten(text), text);
    EXPECT_THAT(text, HasSubstr("\"url\": \"https://other/b\""));
    EXPECT_THAT(text, HasSubstr("\"expectedContentLength\": -1"));
    EXPECT_THAT(text, HasSubstr("\"message\": \"gone\""));
    EXPECT_THAT(text, HasSubstr("\"X-A\": \"\xEF\xBF\xBD\""));
}

TEST_F(CassetteTest, HasAnExchangeBeforeItsCompletionIsCalledAndLeavesOutThoseUnderWay) {
    HeardAnswers answers;
    answers.listenTo(recorder.request(get("https://h/1")));
    answers.listenTo(recorder.request(get("https://h/2")));
    EXPECT_EQ(cassette->size(), 0U);
    EXPECT_THAT(cassette->text(), HasSubstr("\"exchanges\": []"));
    service->answerRequest(1, ScriptedAnswer::json("{}"));
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(cassette->size(), 1U);
    EXPECT_THAT(cassette->text(), HasSubstr("https://h/2"));
    EXPECT_THAT(cassette->text(), Not(HasSubstr("https://h/1")));
    service->answerRequest(0, ScriptedAnswer::json("{}"));
    ASSERT_TRUE(answers.waitFor(2));
    const std::string text = cassette->text();
    EXPECT_LT(text.find("https://h/1"), text.find("https://h/2")) << "in the order of their starts";
}

TEST_F(CassetteTest, PassesEverythingOn) {
    HeardAnswers answers;
    const auto cancelled = answers.listenTo(recorder.request(get("https://h/1")));
    cancelled->cancel();
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_TRUE(answers[0].failedWith(HTTPErrorCode::Cancelled));
    std::int64_t sent = 0;
    const auto upload = recorder.upload(get("https://h/2"), Data(std::string(2000, 'x')));
    upload->progress([&](std::int64_t, std::int64_t total, std::int64_t) { sent = total; });
    service->answer(ScriptedAnswer::json("{}"));
    answers.listenTo(upload);
    ASSERT_TRUE(answers.waitFor(2));
    EXPECT_EQ(sent, 2000);
    const std::string file = folder.path("video");
    service->answer({200, {}, std::string(3000, 'v'), {}});
    answers.listenTo(recorder.download(get("https://h/3"), URL::fileURL(file)));
    ASSERT_TRUE(answers.waitFor(3));
    EXPECT_EQ(contentsOf(file), std::string(3000, 'v'));
    EXPECT_EQ(readAndWritten(cassette->text()), cassette->text());
}

TEST_F(CassetteTest, PassesHopsOnToWhoeverObservesTheManager) {
    struct Hops final : TrafficObserver {
        void didFinishHop(const ObservedExchange&, const HopReport&) override { ++count; }
        int count = 0;
    };
    const auto hops = std::make_shared<Hops>();
    TransportSettings settings;
    settings.observer = hops;
    const auto manual = std::make_shared<ManualTransport>();
    Manager manager(std::make_shared<fakes::RecordingTransport>(manual, cassette), settings);
    HeardAnswers answers;
    answers.listenTo(manager.request(get("https://h/1")));
    manual->observer->didFinishHop({});
    manual->answer("{}");
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_EQ(hops->count, 1);
}

TEST_F(CassetteTest, BlanksWhatTurnsOutToBeSecretLater) {
    record(get("https://h/sessions/k3y-k3y-k3y/state"), ScriptedAnswer::json("{}"));
    EXPECT_THAT(cassette->text(), HasSubstr("k3y"));
    record(get("https://h/b?key=k3y-k3y-k3y"), ScriptedAnswer::json("{}"));
    EXPECT_THAT(cassette->text(), Not(HasSubstr("k3y")));
    EXPECT_THAT(cassette->text(), HasSubstr("https://h/sessions/BLANKED/state"));
}

TEST_F(CassetteTest, KeepsTheNamesThatWereAdded) {
    cassette->addSecretName("X-Device");
    record(get("https://h/?device=1&x_device=2"), ScriptedAnswer::json(R"({"xDevice":"3"})"));
    const auto again = Cassette::parse(cassette->text());
    ASSERT_TRUE(again);
    EXPECT_EQ(again.value()->text(), cassette->text());
    EXPECT_THAT(cassette->text(), HasSubstr("?device=1&x_device=BLANKED"));
    EXPECT_THAT(cassette->text(), HasSubstr("\"xDevice\": \"BLANKED\""));
    EXPECT_THAT(cassette->text(), HasSubstr("\"xdevice\"\n"));
}

TEST_F(CassetteTest, IsSavedAndLoaded) {
    const std::string path = folder.path("feed.json");
    record(get("https://h/1"), ScriptedAnswer::json("{}"));
    EXPECT_EQ(cassette->save(path), std::nullopt);
    EXPECT_EQ(contentsOf(path), cassette->text());
    const auto loaded = Cassette::load(path);
    ASSERT_TRUE(loaded) << loaded.error().description();
    EXPECT_EQ(loaded.value()->size(), 1U);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"feed.json"});
    // Whatever length it has; blanks in front mean nothing.
    for (const std::size_t size : {65'535U, 65'536U, 65'537U, 131'073U}) {
        const std::string text = cassette->text().substr(0, cassette->text().rfind('}') + 1);
        folder.write("feed.json", std::string(size - text.size(), ' ') + text);
        EXPECT_TRUE(Cassette::load(path)) << size;
    }
}

TEST_F(CassetteTest, SaysWhichFileCannotBeReadOrWritten) {
    const std::string nowhere = folder.path("nowhere/feed.json");
    const auto unwritten = cassette->save(nowhere);
    ASSERT_TRUE(unwritten);
    EXPECT_EQ(unwritten->domain(), fakes::CassetteErrorDomain);
    EXPECT_EQ(unwritten->code(), static_cast<std::int64_t>(CassetteErrorCode::File));
    EXPECT_THAT(unwritten->description(), HasSubstr(nowhere));
    for (const std::string& path : {nowhere, folder.path()}) {
        const auto unread = Cassette::load(path);
        ASSERT_FALSE(unread);
        EXPECT_EQ(unread.error().code(), static_cast<std::int64_t>(CassetteErrorCode::File));
        EXPECT_THAT(unread.error().description(), HasSubstr(path));
        EXPECT_TRUE(unread.error().underlying());
    }
}

TEST_F(CassetteTest, SaysWhatIsWrongWithAFile) {
    const std::string request =
        R"("request":{"method":"GET","url":"https://h/","headerFields":{}})";
    const auto withExchange = [](const std::string& exchange) {
        return R"({"cassetteVersion":1,"secretNames":[],"maxBodyBytes":9,"exchanges":[)" +
               exchange + "]}";
    };
    const auto withResponse = [&](const std::string& members) {
        return withExchange("{" + request + R"(,"response":{"status":200,"headerFields":{})" +
                            members + "}}");
    };
    ASSERT_TRUE(Cassette::parse(withResponse("")));
    const std::pair<std::string, const char*> table[] = {
        {"", "it is not JSON"},
        {"{", "it is not JSON"},
        {"[]", "\"cassetteVersion\" is missing"},
        {"{}", "\"cassetteVersion\" is missing"},
        {R"({"cassetteVersion":2})", "it has version 2, this library reads version 1"},
        {R"({"cassetteVersion":1})", "\"maxBodyBytes\" is missing"},
        {R"({"cassetteVersion":1,"maxBodyBytes":-1})", "\"maxBodyBytes\" is missing"},
        {R"({"cassetteVersion":1,"maxBodyBytes":1})", "\"secretNames\" is missing"},
        {R"({"cassetteVersion":1,"maxBodyBytes":1,"secretNames":[1]})", "a secret name is"},
        {R"({"cassetteVersion":1,"maxBodyBytes":1,"secretNames":[]})", "\"exchanges\" is missing"},
        {withExchange("1"), "exchange 1: the request's method is missing"},
        {withExchange("{" + request + "}"), "exchange 1: there is neither"},
        {withExchange(R"({"request":{"method":"get","url":"https://h/","headerFields":{}}})"),
         "exchange 1: the request's method is unknown"},
        {withExchange(R"({"request":{"method":"GET","url":"a b","headerFields":{}}})"),
         "exchange 1: the request's URL is not a URL"},
        {withExchange(R"({"request":{"method":"GET","url":"https://h/"}})"),
         "exchange 1: \"headerFields\" is missing"},
        {withExchange(R"({"request":{"method":"GET","url":"h","headerFields":{"A":1}}})"),
         "exchange 1: the header field A is"},
        {withExchange("{" + request + R"(,"response":{"headerFields":{}}})"),
         "exchange 1: the response's status is missing"},
        {withExchange("{" + request + R"(,"error":{"code":1}})"), "exchange 1: the error's domain"},
        {withResponse(R"(,"url":"a b")"), "exchange 1: the response's URL is not a URL"},
        {withResponse(R"(,"text":1)"), "exchange 1: a body's text is"},
        {withResponse(R"(,"base64":"a")"), "exchange 1: a body is not base64"},
        {withResponse(R"(,"text":"a","json":{})"), "exchange 1: there are two bodies"},
        {withResponse(R"(,"tooLong":{"bytes":1})"), "exchange 1: the hash of a long body"},
        {withResponse(R"(,"tooLong":{"bytes":1,"hash":"1x"})"), "exchange 1: the hash of a long"},
    };
    for (const auto& [text, said] : table) {
        const auto parsed = Cassette::parse(text);
        ASSERT_FALSE(parsed) << text;
        EXPECT_EQ(parsed.error().code(), static_cast<std::int64_t>(CassetteErrorCode::Format));
        EXPECT_THAT(parsed.error().localizedDescription(), HasSubstr(said));
        const auto loaded = Cassette::load(folder.write("bad.json", text));
        ASSERT_FALSE(loaded);
        EXPECT_THAT(loaded.error().description(), HasSubstr(folder.path("bad.json")));
    }
}

} // namespace KeloAPI::testing
