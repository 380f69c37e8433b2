#include "support/HeardAnswers.hpp"
#include "support/ManualTransport.hpp"
#include "support/RecordedTraffic.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/Manager.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

using fakes::ScriptedAnswer;
using fakes::ScriptedTransport;

class TrafficObserverTest : public ::testing::Test {
protected:
    /// What is told of a request of `start` that is answered so; its completion hears the same.
    RecordedTraffic::Exchange
    toldOf(const ScriptedAnswer& answer,
           const std::function<std::shared_ptr<Request>(Manager&)>& start) {
        answers.clear();
        const auto transport = std::make_shared<ScriptedTransport>();
        observer = std::make_shared<RecordedTraffic>();
        settings.observer = observer;
        Manager manager(transport, settings);
        answers.listenTo(start(manager));
        transport->answer(answer);
        EXPECT_TRUE(answers.waitFor(1));
        const auto all = observer->whenEnded(1);
        EXPECT_EQ(observer->faults(), 0);
        EXPECT_EQ(all.size(), 1U);
        EXPECT_EQ(all.at(0).ends, 1);
        EXPECT_EQ(all.at(0).error, answers.at(0).error);
        EXPECT_EQ(all.at(0).facts.start, answers.at(0).timeline.requestStartTime);
        EXPECT_EQ(all.at(0).end, answers.at(0).timeline.requestCompletedTime);
        return all.at(0);
    }

    TransportSettings settings;
    std::shared_ptr<RecordedTraffic> observer;
    HeardAnswers answers;
    TemporaryFolder folder;
};

TEST_F(TrafficObserverTest, HearsTheStartAndTheEndOverAnyTransport) {
    FixedRequest request("https://service.example/a?b=c");
    const auto call =
        toldOf({.statusCode = 500}, [&](Manager& manager) { return manager.request(request); });
    EXPECT_EQ(call.facts.url, request.request.url);
    EXPECT_EQ(call.facts.method, Method::GET);
    EXPECT_EQ(call.facts.kind, TransferKind::Call);
    EXPECT_EQ(call.startedOn, std::this_thread::get_id());
    EXPECT_FALSE(call.error) << "a status is no error";
    EXPECT_TRUE(call.hops.empty()) << "nobody has measured one";

    request.request.method = Method::PUT;
    const auto upload =
        toldOf({}, [&](Manager& manager) { return manager.upload(request, Data("bytes")); });
    EXPECT_EQ(upload.facts.method, Method::PUT);
    EXPECT_NE(upload.facts.id, call.facts.id);
}

TEST_F(TrafficObserverTest, HearsWhyAnExchangeEnded) {
    const auto intoFolder = [this](Manager& manager) {
        return manager.download(FixedRequest(), URL::fileURL(folder.path("file")));
    };
    const auto code = [](const RecordedTraffic::Exchange& told) {
        return told.error ? static_cast<HTTPErrorCode>(told.error->code()) : HTTPErrorCode();
    };
    EXPECT_FALSE(toldOf({.body = "whole"}, intoFolder).error);
    EXPECT_EQ(folder.read("file"), "whole");
    EXPECT_EQ(toldOf({}, intoFolder).facts.kind, TransferKind::Download);
    EXPECT_EQ(code(toldOf({.statusCode = 404}, intoFolder)), HTTPErrorCode::HTTPStatus);
    EXPECT_EQ(code(toldOf({},
                          [](Manager& manager) {
                              return manager.download(FixedRequest(),
                                                      URL::fileURL("/nowhere/file"));
                          })),
              HTTPErrorCode::CannotWriteFile);
    EXPECT_EQ(code(toldOf({},
                          [](Manager& manager) {
                              const auto request = manager.request(FixedRequest());
                              request->cancel();
                              return request;
                          })),
              HTTPErrorCode::Cancelled);
    const auto unsent =
        toldOf({}, [](Manager& manager) { return manager.request(FixedRequest("")); });
    EXPECT_EQ(code(unsent), HTTPErrorCode::UnsupportedURL);
    EXPECT_FALSE(unsent.facts.url);
    settings.maxBodyBytes = 3;
    EXPECT_EQ(code(toldOf({.body = "more"},
                          [](Manager& manager) { return manager.request(FixedRequest()); })),
              HTTPErrorCode::BodyTooLarge);
}

TEST_F(TrafficObserverTest, HearsOfTheEndBeforeTheSerializer) {
    const auto manual = std::make_shared<ManualTransport>();
    settings.observer = observer = std::make_shared<RecordedTraffic>();
    Manager manager(manual, settings);
    bool wasTold = false;
    bool hasCompleted = false;
    const auto request = manager.request(FixedRequest());
    request->response([&](const ResponseContent&, Timeline) {
        wasTold = observer->whenEnded(0).at(0).ends == 1;
        return [&] { hasCompleted = true; };
    });
    EXPECT_EQ(observer->whenEnded(0).at(0).ends, 0);
    manual->answer("body");
    EXPECT_TRUE(runUntil([&] { return hasCompleted; }));
    EXPECT_TRUE(wasTold);
}

TEST_F(TrafficObserverTest, HearsOfEachHopThatTheTransportMeasures) {
    const auto manual = std::make_shared<ManualTransport>();
    for (const bool isObserved : {true, false}) {
        answers.clear();
        settings.observer = observer = isObserved ? std::make_shared<RecordedTraffic>() : nullptr;
        Manager manager(manual, settings);
        answers.listenTo(manager.request(FixedRequest()));
        manual->observer->didFinishHop({});
        manual->observer->didFinishHop({});
        manual->answer("body");
        ASSERT_TRUE(answers.waitFor(1));
        EXPECT_TRUE(!isObserved || observer->whenEnded(1).at(0).hops.size() == 2U);
    }
}

TEST_F(TrafficObserverTest, ServesSeveralManagersAndOutlivesThem) {
    settings.observer = observer = std::make_shared<RecordedTraffic>();
    std::weak_ptr<RecordedTraffic> watch = observer;
    {
        Manager one(std::make_shared<ScriptedTransport>(), settings);
        Manager other(std::make_shared<ScriptedTransport>(), settings);
        answers.listenTo(one.request(FixedRequest("https://one.example/")));
        answers.listenTo(other.request(FixedRequest("https://other.example/")));
    }
    settings.observer = nullptr;
    ASSERT_TRUE(answers.waitFor(2));
    const auto all = observer->whenEnded(2);
    ASSERT_EQ(all.size(), 2U);
    for (const auto& told : all) {
        EXPECT_TRUE(told.error && isHTTPError(*told.error, HTTPErrorCode::Cancelled));
    }
    EXPECT_EQ(observer->faults(), 0);
    observer.reset();
    EXPECT_TRUE(runUntil([&] { return watch.expired(); })) << "it goes with the last request";
}

} // namespace KeloAPI::testing
