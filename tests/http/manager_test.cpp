#include "support/HeardAnswers.hpp"
#include "support/ManualTransport.hpp"
#include "support/Words.hpp"

#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/internal/MemorySink.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

using fakes::ScriptedAnswer;
using fakes::ScriptedTransport;
using namespace std::string_view_literals;

class ManagerTest : public ::testing::Test {
protected:
    std::shared_ptr<ScriptedTransport> transport = std::make_shared<ScriptedTransport>();
    HeardAnswers answers;
};

TEST_F(ManagerTest, WhatMustNotBeSentEndsWithAnErrorAndIsNotSent) {
    Manager manager(transport);
    const auto destination = [](const HTTPResponse&) -> URL {
        ADD_FAILURE() << "there is no answer";
        return URL::fileURL("/nowhere");
    };
    std::vector<std::pair<FixedRequest, HTTPErrorCode>> table;
    table.emplace_back("", HTTPErrorCode::UnsupportedURL);
    for (const std::string& url : wordsOf(R"(
             file:///etc/passwd ftp://h/x //h/x users/me http: http:///x gopher://h/ https:a
             https://?x https://u:p@ https://127.1/ https://local%68ost/)")) {
        ASSERT_TRUE(URL::parse(url)) << url;
        table.emplace_back(url, HTTPErrorCode::UnsupportedURL);
    }
    const auto addField = [&table](const std::string& name, const std::string& value) {
        table.emplace_back("https://h/", HTTPErrorCode::InvalidHeader);
        table.back().first.request.headerFields = {{name, value}};
    };
    for (const std::string_view value : {"a\rb"sv, "a\nb"sv, "\r\nX: y"sv, "a\n"sv, "a\0b"sv}) {
        addField("User-Agent", std::string(value));
    }
    for (const char* name : {"", "a b", "a:", "a\r", "a\n", "\xC3\xA4", "(x)", "a/b", "a\x7f"}) {
        addField(name, "value");
    }
    for (const auto& [convertible, code] : table) {
        SCOPED_TRACE(::testing::PrintToString(convertible.request.headerFields));
        SCOPED_TRACE(convertible.request.description());
        answers.clear();
        answers.listenTo(manager.request(convertible))->cancel(); // which does nothing
        answers.listenTo(manager.upload(convertible, Data("x")));
        answers.listenTo(manager.download(convertible, destination));
        EXPECT_TRUE(answers.empty()) << "never inside the call";
        ASSERT_TRUE(answers.waitFor(3));
        EXPECT_TRUE(answers.at(0).failedWith(code) && answers.at(1).failedWith(code) &&
                    answers.at(2).failedWith(code));
    }
    EXPECT_TRUE(transport->requests().empty());
}

TEST_F(ManagerTest, CancelGivesExactlyOneCompletionAndLeavesTheOthersAlone) {
    Manager manager(transport);
    std::vector<std::shared_ptr<Request>> requests;
    for (int i = 0; i < 10; ++i) {
        requests.push_back(answers.listenTo(manager.request(FixedRequest())));
    }
    requests[4]->cancel();
    requests[4]->cancel();
    EXPECT_TRUE(answers.empty()) << "asynchronously";
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_TRUE(answers.at(0).failedWith(HTTPErrorCode::Cancelled));
    EXPECT_EQ(transport->waitingCount(), 9U);
    transport->answerRequest(4, ScriptedAnswer::json("late"));
    requests[4]->cancel();
    for (int i = 0; i < 9; ++i) {
        transport->answer(ScriptedAnswer::json(std::to_string(i)));
    }
    ASSERT_TRUE(answers.waitFor(10));
    for (std::size_t i = 1; i < 10; ++i) {
        EXPECT_FALSE(answers[i].error);
        EXPECT_EQ(answers[i].body, std::to_string(i - 1));
        EXPECT_EQ(answers[i].serializedOn, answers[0].serializedOn) << "one thread for them all";
    }
}

TEST_F(ManagerTest, WhenItGoesWithItsTransportThoseInFlightAreCancelled) {
    const std::weak_ptr<ScriptedTransport> watch = transport;
    {
        Manager manager(std::move(transport));
        for (int i = 0; i < 5; ++i) {
            answers.listenTo(manager.request(FixedRequest()));
        }
    }
    EXPECT_TRUE(watch.expired());
    ASSERT_TRUE(answers.waitFor(5));
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_TRUE(answers.at(i).failedWith(HTTPErrorCode::Cancelled));
    }
}

TEST_F(ManagerTest, ATransportThatIsKeptCarriesItsRequestsToTheirEnd) {
    answers.listenTo(Manager(transport).request(FixedRequest()));
    transport->answer(ScriptedAnswer::json("[]"));
    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_FALSE(answers[0].error);
    EXPECT_EQ(answers[0].body, "[]");
}

TEST_F(ManagerTest, MayGoInsideACompletion) {
    auto manager = std::make_unique<Manager>(transport);
    const auto request = manager->request(FixedRequest());
    request->response([&](const ResponseContent&, Timeline) { return [&] { manager.reset(); }; });
    transport->answer(ScriptedAnswer::json("{}"));
    EXPECT_TRUE(runUntil([&] { return manager == nullptr; }));
}

TEST_F(ManagerTest, TakesRequestsFromManyThreads) {
    Manager manager(transport);
    constexpr std::size_t perThread = 50;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (std::size_t n = 0; n < perThread; ++n) {
                const auto request = answers.listenTo(manager.request(FixedRequest()));
                if (n % 5 == 0) {
                    request->cancel();
                }
                transport->answer(ScriptedAnswer::json("{}"));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(answers.waitFor(4 * perThread));
    // One more comes behind them all; an answer to one that was cancelled may be waiting for it.
    transport->answer(ScriptedAnswer::json("{}"));
    answers.listenTo(manager.request(FixedRequest()));
    ASSERT_TRUE(answers.waitFor(4 * perThread + 1));
    EXPECT_EQ(answers.size(), 4 * perThread + 1) << "once each";
    EXPECT_EQ(transport->waitingCount(), 0U);
}

TEST_F(ManagerTest, AnUploadsDataReplacesTheBody) {
    Manager manager(transport);
    FixedRequest convertible;
    convertible.request.method = Method::PUT;
    convertible.request.body = Data("old");
    answers.listenTo(manager.upload(convertible, Data("new")));
    EXPECT_EQ(transport->requests().at(0).body->text(), "new");
    EXPECT_EQ(transport->requests().at(0).method, Method::PUT);
    transport->answer(ScriptedAnswer::json("{}"));
    ASSERT_TRUE(answers.waitFor(1));
}

/// Answers have this much memory left: all else has been taken by others.
class ManagerMemoryTest : public ManagerTest {
protected:
    static constexpr std::size_t left = 1000;

    static inline const std::size_t maxOfAll = TransportSettings().maxBodyBytesInProcess;

    ManagerMemoryTest() {
        // The answers to the tests before go with threads that may still be at work.
        bool isTaken = false;
        EXPECT_TRUE(runUntil([&] {
            isTaken = isTaken || BodyMemory::take(maxOfAll, maxOfAll);
            return isTaken;
        }));
        BodyMemory::giveBack(left);
    }
    ~ManagerMemoryTest() override { BodyMemory::giveBack(maxOfAll - left); }

    static bool allHasComeBack() {
        const bool hasComeBack = BodyMemory::take(left, maxOfAll);
        if (hasComeBack) {
            BodyMemory::giveBack(left);
        }
        return hasComeBack;
    }
};

TEST_F(ManagerMemoryTest, LargeAnswersHaveALimitForAllOfThem) {
    Manager manager(transport);
    transport->answer(ScriptedAnswer::json(std::string(left, 'x')));
    transport->answer(ScriptedAnswer::json("x"));
    auto first = answers.listenTo(manager.request(FixedRequest()));
    answers.listenTo(manager.request(FixedRequest()));
    ASSERT_TRUE(answers.waitFor(2));
    EXPECT_EQ(answers[0].error, std::nullopt);
    EXPECT_TRUE(answers.at(1).failedWith(HTTPErrorCode::OutOfResources));
    EXPECT_FALSE(allHasComeBack());
    first = nullptr; // and soon the answer with it
    EXPECT_TRUE(runUntil(allHasComeBack));
}

TEST_F(ManagerMemoryTest, AnAnswerThatFailsIsNotKept) {
    const auto manual = std::make_shared<ManualTransport>();
    Manager manager(manual);
    // One whose connection is lost, one that is refused for being too large.
    for (const bool refused : {false, true}) {
        const auto held = answers.listenTo(manager.request(FixedRequest()));
        manual->head(200);
        EXPECT_TRUE(manual->data(std::string(left, 'x')));
        EXPECT_TRUE(manual->data("")) << "which takes no memory";
        EXPECT_EQ(refused && manual->data("x"), false);
        manual->complete(httpError(HTTPErrorCode::ConnectionLost, "gone"));
        ASSERT_TRUE(answers.waitFor(refused ? 2 : 1));
        EXPECT_TRUE(answers.back().error);
        EXPECT_EQ(answers.back().body, "");
        EXPECT_TRUE(allHasComeBack());
    }
}

} // namespace KeloAPI::testing
