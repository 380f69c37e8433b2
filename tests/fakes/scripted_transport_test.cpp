#include "support/MainLoop.hpp"
#include "support/ManualTransport.hpp"

#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace KeloAPI::testing {

using fakes::ScriptedAnswer;
using ::testing::ElementsAre;

class ScriptedTransportTest : public ::testing::Test {
protected:
    std::shared_ptr<Request> send(const char* url = "https://h/") {
        auto request = manager.request(FixedRequest(url));
        request->response([this](const ResponseContent& content, Timeline) {
            std::string line =
                content.response ? std::to_string(content.response->statusCode) : "-";
            line += " " + content.body;
            line += content.error ? " " + std::to_string(content.error->code()) : "";
            return [this, line] { outcomes.push_back(line); };
        });
        return request;
    }
    bool waitForOutcomes(std::size_t count) {
        return runUntil([&] { return outcomes.size() >= count; });
    }

    std::shared_ptr<fakes::ScriptedTransport> transport =
        std::make_shared<fakes::ScriptedTransport>();
    Manager manager{transport};
    std::vector<std::string> outcomes;
};

TEST_F(ScriptedTransportTest, AnswersInTheOrderBothCome) {
    transport->answer(ScriptedAnswer::json("1"));
    send();
    send();
    send();
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(transport->waitingCount(), 2U);
    transport->answer(ScriptedAnswer::json("2"));
    transport->answer(ScriptedAnswer::json("3"));
    transport->answer(ScriptedAnswer::json("4"));
    ASSERT_TRUE(waitForOutcomes(3));
    send();
    ASSERT_TRUE(waitForOutcomes(4));
    EXPECT_THAT(outcomes, ElementsAre("200 1", "200 2", "200 3", "200 4"));
}

TEST_F(ScriptedTransportTest, AnswersACertainRequestOnce) {
    send("https://h/0");
    send("https://h/1");
    transport->answerRequest(1, ScriptedAnswer::json("b"));
    ASSERT_TRUE(waitForOutcomes(1));
    transport->answerRequest(1, ScriptedAnswer::json("again"));
    transport->answerRequest(7, ScriptedAnswer::json("nobody"));
    transport->answer(ScriptedAnswer::json("a"));
    send("https://h/2");
    transport->answer(ScriptedAnswer::json("c")); // behind all that may come of the others
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_THAT(outcomes, ElementsAre("200 b", "200 a", "200 c"));
    ASSERT_EQ(transport->requests().size(), 3U);
    EXPECT_EQ(transport->requests()[1].url, URL::parse("https://h/1"));
}

TEST_F(ScriptedTransportTest, PlaysHeadBodyAndError) {
    ScriptedAnswer busy;
    busy.statusCode = 503;
    busy.headerFields = {{"A", "b"}};
    busy.body = "busy";
    busy.error = Error("d", 9);
    ScriptedAnswer empty;
    empty.statusCode = 204;
    transport->answer(busy);
    transport->answer(ScriptedAnswer::failure(Error("d", 7)));
    transport->answer(empty);
    std::int64_t received = 0; // of a body that nobody is handed, because of the error
    send()->progress([&](std::int64_t, std::int64_t total, std::int64_t) { received = total; });
    send();
    send();
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_THAT(outcomes, ElementsAre("503  9", "-  7", "204 "));
    EXPECT_EQ(received, 4);
}

TEST_F(ScriptedTransportTest, EndsWhereTheReceiverWantsNoMore) {
    TransportSettings settings;
    settings.maxBodyBytes = 3;
    Manager strict(transport, settings);
    transport->answer(ScriptedAnswer::json("more"));
    std::optional<Error> heard;
    strict.request(FixedRequest())->response([&](const ResponseContent& content, Timeline) {
        return [&, error = content.error] { heard = error; };
    });
    ASSERT_TRUE(runUntil([&] { return heard.has_value(); }));
    EXPECT_TRUE(isHTTPError(*heard, HTTPErrorCode::BodyTooLarge));
}

TEST_F(ScriptedTransportTest, CancelsWhatWaitsWhenItGoes) {
    auto own = std::make_shared<fakes::ScriptedTransport>();
    std::optional<Error> heard;
    Manager(std::move(own))
        .request(FixedRequest())
        ->response([&](const ResponseContent& content, Timeline) {
            return [&, error = content.error] { heard = error; };
        });
    ASSERT_TRUE(runUntil([&] { return heard.has_value(); }));
    EXPECT_TRUE(isHTTPError(*heard, HTTPErrorCode::Cancelled));
}

TEST_F(ScriptedTransportTest, TheHeadSaysTheBodysLengthOrWhatItIsTold) {
    ScriptedAnswer untold = ScriptedAnswer::json("12345");
    ScriptedAnswer told = untold;
    told.expectedContentLength = -1;
    std::vector<std::int64_t> lengths;
    for (const ScriptedAnswer& answer : {untold, told}) {
        transport->answer(answer);
        manager.request(FixedRequest())->response([&](const ResponseContent& content, Timeline) {
            return [&, length = content.response->expectedContentLength] {
                lengths.push_back(length);
            };
        });
    }
    ASSERT_TRUE(runUntil([&] { return lengths.size() == 2; }));
    EXPECT_THAT(lengths, ElementsAre(5, -1));
}

} // namespace KeloAPI::testing
