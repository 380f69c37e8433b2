#include "support/MainLoop.hpp"
#include "support/ScriptedSession.hpp"

#include <KeloAPI/api/AlamofireEndpointRequest.hpp>
#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/internal/MemorySink.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <thread>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

/// Sends of an endpoint, and the handles that they return.
class EndpointRequestTest : public testing::ScriptedSessionTest {
protected:
    std::shared_ptr<EndpointRequest> send() { return sendWith(std::make_shared<KLEmptyParser>()); }
    std::shared_ptr<EndpointRequest>
    sendWith(const std::shared_ptr<const JsonParser<KLEmpty>>& parser) {
        return endpoint->request(parser, completion());
    }
    std::function<void(std::vector<std::shared_ptr<KLEmpty>>, std::optional<Metadata>,
                       const Timeline&, std::optional<Error>)>
    completion() {
        return [this, kept = kept](std::vector<std::shared_ptr<KLEmpty>> sentItems,
                                   std::optional<Metadata>, const Timeline& sentTimeline,
                                   std::optional<Error> sentError) {
            ++completions;
            items = sentItems.size();
            error = std::move(sentError);
            timeline = sentTimeline;
            thread = std::this_thread::get_id();
        };
    }
    /// Answers with JSON of an empty success.
    void succeed() { transport->answer(ScriptedAnswer::json(R"({"data": {}})")); }
    /// Notes in `fractions` what progress a call reports.
    void noteProgress(EndpointRequest& handle) {
        handle.setProgressHandler(
            [this](EndpointRequest&, double fraction) { fractions.push_back(fraction); });
    }
    bool completed(int times = 1) {
        return runUntil([&] { return completions >= times; });
    }

    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
    /// Held by every completion: shows when they are gone.
    std::shared_ptr<int> kept = std::make_shared<int>(0);
    int completions = 0;
    std::size_t items = 0;
    std::optional<Error> error;
    Timeline timeline;
    std::thread::id thread;
    std::vector<double> fractions;
};

TEST_F(EndpointRequestTest, CompletesOnceOnTheMainQueueWhateverTheStatusNeverInsideTheSend) {
    auto answer = ScriptedAnswer::json(R"({"data": {"records": [{}, {}]}})");
    answer.statusCode = 500;
    transport->answer(answer);
    const auto handle = send();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(completions, 0);
    passThrough();
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(items, 2U);
    EXPECT_FALSE(error.has_value());
}

TEST_F(EndpointRequestTest, TheTimelinesInstantsAreInOrder) {
    const Date before = Date::now();
    succeed();
    send();
    ASSERT_TRUE(completed());
    EXPECT_LE(before, timeline.requestStartTime);
    EXPECT_LE(timeline.requestStartTime, timeline.initialResponseTime);
    EXPECT_LE(timeline.initialResponseTime, timeline.requestCompletedTime);
    EXPECT_LE(timeline.requestCompletedTime, timeline.serializationCompletedTime);
    EXPECT_LE(timeline.serializationCompletedTime, Date::now());
}

TEST_F(EndpointRequestTest, WritesOneTraceLineWithoutHeaders) {
    delegate->sessionKey = "secret";
    endpoint->setPath("users/me");
    succeed();
    send();
    ASSERT_TRUE(completed());
    EXPECT_EQ(lines, std::vector<std::string>{"GET https://service.example/users/me"});
}

TEST_F(EndpointRequestTest, APathThatIsNoURLOfHTTPEndsAsTransportErrorWithNothingSent) {
    for (const char* path :
         {"http nonsense", "ftp://http.example/x", "users/http", "file:///http"}) {
        completions = 0;
        endpoint->setPath(path);
        send();
        EXPECT_EQ(completions, 0);
        ASSERT_TRUE(completed());
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::UnsupportedURL)) << path;
    }
    EXPECT_TRUE(transport->requests().empty());
    EXPECT_EQ(lines.front(), "nil");
    EXPECT_EQ(lines.size(), 4U) << "one line for each call";
}

TEST_F(EndpointRequestTest, CancelGivesOneCompletionWithTheCancellationError) {
    const auto handle = send();
    handle->cancel();
    handle->cancel();
    ASSERT_TRUE(completed());
    EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::Cancelled));
    handle->cancel();
    passThrough();
    EXPECT_EQ(completions, 1);
}

TEST_F(EndpointRequestTest, ACallOutlivesItsEndpointAndItsHandle) {
    std::weak_ptr<EndpointRequest> handle = send();
    const std::weak_ptr<Endpoint> watched = endpoint;
    endpoint.reset();
    EXPECT_FALSE(watched.expired());
    EXPECT_FALSE(handle.expired());
    succeed();
    ASSERT_TRUE(completed());
    EXPECT_TRUE(runUntil([&] { return watched.expired() && handle.expired(); }));
    EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(EndpointRequestTest, ProgressCarriesTheHandleAndTheFraction) {
    const auto handle = send();
    EXPECT_FALSE(handle->progressHandler());
    handle->setProgressHandler([&](EndpointRequest& request, double fraction) {
        EXPECT_EQ(&request, handle.get());
        EXPECT_EQ(completions, 0);
        fractions.push_back(fraction);
    });
    EXPECT_TRUE(handle->progressHandler());
    succeed();
    ASSERT_TRUE(completed());
    EXPECT_EQ(fractions, std::vector<double>{1.0});
}

TEST_F(EndpointRequestTest, TheFractionIsWhateverTheDivisionGivesWhereBytesMove) {
    for (const auto& [body, expected] :
         {std::pair(R"({"data": {}})", 0), std::pair(R"({"data": {}})", -1), std::pair("", 1)}) {
        completions = 0;
        auto answer = ScriptedAnswer::json(body);
        answer.expectedContentLength = expected;
        const auto handle = send();
        noteProgress(*handle);
        transport->answer(answer);
        ASSERT_TRUE(completed());
    }
    ASSERT_EQ(fractions.size(), 2U);
    EXPECT_TRUE(std::isinf(fractions[0]));
    EXPECT_EQ(fractions[1], -12.0);
}

/// Has no memory for a record.
struct StarvedParser : JsonParser<KLEmpty> {
    std::shared_ptr<KLEmpty> parse(const JsonObject&) const override { throw std::bad_alloc(); }
};

TEST_F(EndpointRequestTest, NoMemoryForTheRecordsIsNotTheAnswersFault) {
    for (const char* body : {R"({"data": {"records": [{}]}})", R"({"data": {"id": 1}})"}) {
        completions = 0;
        lines.clear();
        transport->answer(ScriptedAnswer::json(body));
        sendWith(std::make_shared<StarvedParser>());
        ASSERT_TRUE(completed());
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::OutOfResources)) << error->description();
        EXPECT_EQ(lines, std::vector<std::string>{"GET https://service.example/"});
    }
}

TEST_F(EndpointRequestTest, AHeldHandleKeepsNeitherCompletionNorAnswer) {
    const std::string body = R"({"data": {}})";
    // All but this has been taken by others.
    const std::size_t maxOfAll = TransportSettings().maxBodyBytesInProcess;
    ASSERT_TRUE(BodyMemory::take(maxOfAll - body.size(), maxOfAll));
    const auto handle = send();
    transport->answer(ScriptedAnswer::json(body));
    ASSERT_TRUE(completed());
    EXPECT_FALSE(error);
    EXPECT_TRUE(runUntil([&] { return kept.use_count() == 1; }));
    bool taken = false;
    EXPECT_TRUE(runUntil([&] { return taken = taken || BodyMemory::take(body.size(), maxOfAll); }));
    BodyMemory::giveBack(maxOfAll - (taken ? 0 : body.size()));
}

TEST_F(EndpointRequestTest, ANullParserStopsTheProcess) {
    EXPECT_DEATH(sendWith(nullptr), "contract violated: a call needs a parser");
}

TEST_F(EndpointRequestTest, TheProgressHandlerMayReplaceItself) {
    int reports = 0;
    const auto handle = send();
    handle->setProgressHandler([&](EndpointRequest& request, double) {
        ++reports;
        request.setProgressHandler({});
    });
    succeed();
    ASSERT_TRUE(completed());
    EXPECT_EQ(reports, 1);
    EXPECT_FALSE(handle->progressHandler());
}

TEST_F(EndpointRequestTest, TheProgressHandlerIsReadAnewAtEachReport) {
    const auto manual = std::make_shared<testing::ManualTransport>();
    session->setSessionManager(std::make_shared<Manager>(manual));
    std::string heard;
    const auto handle = send();
    handle->setProgressHandler([&heard](EndpointRequest& request, double) {
        heard += "a";
        request.setProgressHandler([&heard](EndpointRequest&, double) { heard += "b"; });
    });
    manual->head(200, 4);
    manual->data("ab");
    EXPECT_TRUE(runUntil([&] { return heard == "a"; }));
    manual->data("cd");
    EXPECT_TRUE(runUntil([&] { return heard == "ab"; }));
    manual->complete();
    EXPECT_TRUE(completed());
}

TEST_F(EndpointRequestTest, UploadsReportTheBytesSent) {
    noteProgress(*endpoint->upload(std::make_shared<KLEmptyParser>(), Data(std::string(1000, 'x')),
                                   completion()));
    succeed();
    ASSERT_TRUE(completed());
    EXPECT_EQ(fractions, std::vector<double>{1.0});
    EXPECT_EQ(transport->requests().front().body->size(), 1000U);
}

TEST(AlamofireEndpointRequest, WithoutARequestDoesNothing) {
    const auto handle = AlamofireEndpointRequest::create(nullptr);
    handle->cancel();
    EXPECT_FALSE(handle->progressHandler());
}

TEST_F(EndpointRequestTest, TextIsHandedOutAsItComes) {
    std::optional<std::string> text;
    const auto take = [&](std::optional<std::string> sentText, std::optional<Error> sentError) {
        text = std::move(sentText);
        error = std::move(sentError);
        ++completions;
    };
    for (const std::string body : {"{\"error\": \"no\", \"code\": 100}", "not json", ""}) {
        completions = 0;
        auto answer = ScriptedAnswer::json(body);
        answer.statusCode = 500;
        transport->answer(answer);
        endpoint->request(take);
        ASSERT_TRUE(completed());
        EXPECT_EQ(text, body);
        EXPECT_FALSE(error.has_value());
    }
    const auto failed = httpError(HTTPErrorCode::ConnectionLost, "gone");
    transport->answer(ScriptedAnswer::failure(failed));
    completions = 0;
    endpoint->request(take);
    ASSERT_TRUE(completed());
    EXPECT_EQ(text, std::nullopt);
    EXPECT_EQ(error, failed);
    EXPECT_EQ(delegate->reauthCount, 0);
    EXPECT_TRUE(lines.empty());
}

/// A host's own endpoint: other headers, and a request made by hand.
class HandMadeEndpoint : public Endpoint {
public:
    HeaderFields headerFields() const override { return {{"X-Own", "1"}}; }
    KeloAPI::URLRequest URLRequest() const override {
        auto request = Endpoint::URLRequest();
        request.timeoutInterval = std::chrono::seconds(5);
        return request;
    }
    int sends = 0;
    std::shared_ptr<EndpointRequest> send(ResponseReader reader) override {
        ++sends;
        return Endpoint::send(std::move(reader));
    }

protected:
    HandMadeEndpoint(Key key, std::shared_ptr<Session> made)
        : Endpoint(key, std::move(made)) {}
};

TEST_F(EndpointRequestTest, DerivedClassesOverrideHeadersRequestAndSend) {
    const auto own = Endpoint::make<HandMadeEndpoint>(session);
    endpoint = own;
    transport->answer(ScriptedAnswer::json(R"({"error": "expired", "code": 100})"));
    succeed();
    send();
    ASSERT_TRUE(completed());
    session->handleQueuedRetries(true);
    ASSERT_TRUE(completed(2));
    EXPECT_EQ(own->sends, 2);
    EXPECT_EQ(transport->requests()[1].headerFields, (HeaderFields{{"X-Own", "1"}}));
    EXPECT_EQ(transport->requests()[1].timeoutInterval, std::chrono::seconds(5));
}

} // namespace KeloAPI
