#include "support/MainLoop.hpp"
#include "support/ManualTransport.hpp"

#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/internal/BodyMemory.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using fakes::ScriptedTransport;
using testing::FixedRequest;
using testing::runFor;
using testing::runUntil;
using namespace std::chrono_literals;

class ManagerTest : public ::testing::Test {
protected:
    void listen(const std::shared_ptr<Request>& request) {
        request->response([this](const ResponseContent& content, Timeline) {
            return [this, body = content.body, error = content.error] {
                bodies.push_back(body);
                errors.push_back(error);
            };
        });
    }
    bool waitForAnswers(std::size_t count) {
        return runUntil([&] { return errors.size() >= count; });
    }

    std::shared_ptr<ScriptedTransport> transport = std::make_shared<ScriptedTransport>();
    std::vector<std::string> bodies;
    std::vector<std::optional<Error>> errors;
};

TEST_F(ManagerTest, ARequestWithoutAURLEndsWithAnErrorAndIsNotSent) {
    Manager manager(transport);
    for (const char* url : {"", "file:///etc/passwd", "ftp://h/", "users/me", "http:///x"}) {
        errors.clear();
        listen(manager.request(FixedRequest(url)));
        EXPECT_TRUE(errors.empty()) << "never inside the call";
        ASSERT_TRUE(waitForAnswers(1));
        ASSERT_TRUE(errors[0]);
        EXPECT_TRUE(isHTTPError(*errors[0], HTTPErrorCode::UnsupportedURL)) << url;
    }
    EXPECT_TRUE(transport->requests().empty());
}

TEST_F(ManagerTest, AHeaderWithALineEndIsRefusedAndNothingIsSent) {
    Manager manager(transport);
    FixedRequest convertible;
    convertible.request.headerFields = {{"User-Agent", "x\r\nInjected: yes"}};
    listen(manager.request(convertible));
    listen(manager.upload(convertible, Data("x")));
    listen(manager.download(convertible, [](const HTTPResponse&) -> URL {
        ADD_FAILURE() << "there is no answer";
        return URL::fileURL("/nowhere");
    }));
    ASSERT_TRUE(waitForAnswers(3));
    for (const auto& error : errors) {
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::InvalidHeader));
    }
    EXPECT_TRUE(transport->requests().empty());
}

TEST_F(ManagerTest, CancellingOneThatWasNeverSentDoesNothing) {
    Manager manager(transport);
    const auto request = manager.request(FixedRequest(""));
    request->cancel();
    listen(request);
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(isHTTPError(*errors[0], HTTPErrorCode::UnsupportedURL));
}

TEST_F(ManagerTest, CancelGivesExactlyOneCompletion) {
    Manager manager(transport);
    const auto request = manager.request(FixedRequest());
    listen(request);
    request->cancel();
    request->cancel();
    EXPECT_TRUE(errors.empty()) << "asynchronously";
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(isHTTPError(*errors[0], HTTPErrorCode::Cancelled));
    transport->answerRequest(0, ScriptedAnswer::json("{}"));
    request->cancel();
    runFor(10ms);
    EXPECT_EQ(errors.size(), 1U);
}

TEST_F(ManagerTest, CancelOfOneLeavesTheOthersAlone) {
    Manager manager(transport);
    std::vector<std::shared_ptr<Request>> requests;
    for (int i = 0; i < 10; ++i) {
        requests.push_back(manager.request(FixedRequest()));
        listen(requests.back());
    }
    requests[4]->cancel();
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_TRUE(isHTTPError(*errors[0], HTTPErrorCode::Cancelled));
    EXPECT_EQ(transport->waitingCount(), 9U);
    for (int i = 0; i < 9; ++i) {
        transport->answer(ScriptedAnswer::json(std::to_string(i)));
    }
    ASSERT_TRUE(waitForAnswers(10));
    for (std::size_t i = 1; i < 10; ++i) {
        EXPECT_FALSE(errors[i]);
        EXPECT_EQ(bodies[i], std::to_string(i - 1));
    }
}

TEST_F(ManagerTest, WhenItGoesWithItsTransportThoseInFlightAreCancelled) {
    const std::weak_ptr<ScriptedTransport> watch = transport;
    {
        Manager manager(std::move(transport));
        for (int i = 0; i < 5; ++i) {
            listen(manager.request(FixedRequest()));
        }
    }
    EXPECT_TRUE(watch.expired());
    ASSERT_TRUE(waitForAnswers(5));
    for (const auto& error : errors) {
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::Cancelled));
    }
}

TEST_F(ManagerTest, ATransportThatIsKeptCarriesItsRequestsToTheirEnd) {
    listen(Manager(transport).request(FixedRequest()));
    runFor(2ms);
    EXPECT_TRUE(errors.empty());
    transport->answer(ScriptedAnswer::json("[]"));
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_FALSE(errors[0]);
    EXPECT_EQ(bodies[0], "[]");
}

TEST_F(ManagerTest, MayGoInsideACompletion) {
    auto manager = std::make_unique<Manager>(transport);
    const auto request = manager->request(FixedRequest());
    request->response([&](const ResponseContent&, Timeline) {
        return [&] {
            manager.reset();
            errors.emplace_back();
        };
    });
    transport->answer(ScriptedAnswer::json("{}"));
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_EQ(manager, nullptr);
}

TEST_F(ManagerTest, TakesRequestsFromManyThreads) {
    Manager manager(transport);
    constexpr int perThread = 50;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < perThread; ++n) {
                const auto request = manager.request(FixedRequest());
                listen(request);
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
    ASSERT_TRUE(waitForAnswers(4U * perThread));
    runFor(5ms);
    EXPECT_EQ(errors.size(), 4U * perThread) << "once each";
    EXPECT_EQ(transport->waitingCount(), 0U);
}

TEST_F(ManagerTest, AnUploadsDataReplacesTheBody) {
    Manager manager(transport);
    FixedRequest convertible;
    convertible.request.method = Method::PUT;
    convertible.request.body = Data("old");
    listen(manager.upload(convertible, Data("new")));
    transport->answer(ScriptedAnswer::json("{}"));
    ASSERT_TRUE(waitForAnswers(1));
    EXPECT_EQ(transport->requests().at(0).body->text(), "new");
    EXPECT_EQ(transport->requests().at(0).method, Method::PUT);
}

TEST_F(ManagerTest, OverHTTPRefusesConnectionsThatNobodyTakes) {
    // Port 1 on loopback: nothing listens there.
    Manager manager(ServerTrustPolicyManager{});
    listen(manager.request(FixedRequest("http://127.0.0.1:1/")));
    ASSERT_TRUE(waitForAnswers(1));
    ASSERT_TRUE(errors[0]);
    EXPECT_TRUE(isHTTPError(*errors[0], HTTPErrorCode::CannotConnect)) << errors[0]->description();
}

TEST_F(ManagerTest, LargeAnswersHaveALimitForAllOfThem) {
    Manager manager(transport);
    // All but this has been taken by others.
    constexpr std::size_t left = 1000;
    ASSERT_TRUE(BodyMemory::take(BodyMemory::mostOfAll - left));
    transport->answer(ScriptedAnswer::json(std::string(left, 'x')));
    transport->answer(ScriptedAnswer::json("x"));
    auto first = manager.request(FixedRequest());
    listen(first);
    listen(manager.request(FixedRequest()));
    ASSERT_TRUE(waitForAnswers(2));
    EXPECT_EQ(errors[0], std::nullopt);
    ASSERT_TRUE(errors[1]);
    EXPECT_TRUE(isHTTPError(*errors[1], HTTPErrorCode::OutOfResources));

    first = nullptr; // and soon the answer with it
    bool taken = false;
    EXPECT_TRUE(runUntil([&] { return taken = taken || BodyMemory::take(left); }));
    BodyMemory::giveBack(left);
    BodyMemory::giveBack(BodyMemory::mostOfAll - left);
}

TEST_F(ManagerTest, AnAnswerThatFailsIsNotKept) {
    const auto manual = std::make_shared<testing::ManualTransport>();
    Manager manager(manual);
    constexpr std::size_t left = 1000;
    ASSERT_TRUE(BodyMemory::take(BodyMemory::mostOfAll - left));
    // One whose connection is lost, one that is refused for being too large.
    for (const bool refused : {false, true}) {
        const auto held = manager.request(FixedRequest());
        listen(held);
        manual->head(200);
        EXPECT_TRUE(manual->data(std::string(left, 'x')));
        EXPECT_EQ(refused && manual->data("x"), false);
        manual->complete(httpError(HTTPErrorCode::ConnectionLost, "gone"));
        ASSERT_TRUE(waitForAnswers(refused ? 2 : 1));
        EXPECT_TRUE(errors.back());
        EXPECT_EQ(bodies.back(), "");
        ASSERT_TRUE(BodyMemory::take(left)) << "its share has come back";
        BodyMemory::giveBack(left);
    }
    BodyMemory::giveBack(BodyMemory::mostOfAll - left);
}

} // namespace KeloAPI
