#include "UploadTest.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <sstream>

namespace KeloAPI::testing {

using Json = nlohmann::json;

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// The sockets of this process that are connected to a port of this machine.
int socketsTo(int port) {
    char wanted[8];
    std::snprintf(wanted, sizeof wanted, ":%04X", static_cast<unsigned>(port));
    std::set<std::string> inodes;
    for (const char* table : {"/proc/self/net/tcp", "/proc/self/net/tcp6"}) {
        std::ifstream lines(table);
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            std::string word[10];
            for (std::string& each : word) {
                words >> each;
            }
            if (word[2].ends_with(wanted)) {
                inodes.insert("socket:[" + word[9] + "]");
            }
        }
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        count += inodes.count(std::filesystem::read_symlink(entry.path(), gone).string()) != 0;
    }
    return count;
}

} // namespace

class UploadsAtService : public UploadTest {
protected:
    /// The only request since the last look at the log.
    SeenRequest only() {
        const auto requests = service.requests();
        EXPECT_EQ(requests.size(), 1U);
        return requests.empty() ? SeenRequest() : requests.back();
    }
    /// The requests since the last look at the log, as soon as there are so many, the one with the
    /// shortest body first: one that broke off may enter the log last.
    std::vector<SeenRequest> sentSegments(std::size_t count) {
        std::vector<SeenRequest> sent;
        EXPECT_TRUE(runUntil([&] {
            const auto more = service.requests();
            sent.insert(sent.end(), more.begin(), more.end());
            return sent.size() >= count;
        }));
        std::sort(sent.begin(), sent.end(), [](const SeenRequest& a, const SeenRequest& b) {
            return a.bodyBytes < b.bodyBytes;
        });
        return sent;
    }
    void addFaultToSegments(const Json& action) {
        service.addFault({{"match", {{"method", "PUT"}}}, {"action", action}});
    }
    bool faultFires() {
        return runUntil([&] { return service.faults().back().at("fired") == 1; });
    }
    static bool isCompleted(const Outcome& outcome) {
        return runUntil([&] { return outcome->completions > 0; });
    }
    /// The fractions that the handle reports; kept by its handler.
    static std::shared_ptr<std::vector<double>> fractionsOf(const SentSegment& sent) {
        auto fractions = std::make_shared<std::vector<double>>();
        sent.handle->setProgressHandler([=, outcome = sent.outcome](EndpointRequest&, double one) {
            EXPECT_EQ(outcome->completions, 0);
            fractions->push_back(one);
        });
        return fractions;
    }
    /// Cancels it and expects the one completion.
    void expectCancelled(const SentSegment& sent) {
        sent.handle->cancel();
        EXPECT_TRUE(isCompleted(sent.outcome));
        ASSERT_TRUE(sent.outcome->error);
        EXPECT_TRUE(isHTTPError(*sent.outcome->error, HTTPErrorCode::Cancelled));
        passThrough();
        EXPECT_EQ(sent.outcome->completions, 1);
    }
    /// The only request since the last look is this one, and has the fields that it should.
    void expectSent(const char* method, const std::string& path, const std::string& query,
                    const std::string& body = {}) {
        const SeenRequest request = only();
        EXPECT_EQ(request.method, method);
        EXPECT_EQ(request.path, "/upload/longform-videos" + path);
        EXPECT_EQ(request.query, query);
        EXPECT_TRUE(request.body == body);
        EXPECT_EQ(request.bodyBytes, body.size());
        EXPECT_EQ(request.bodySha256, body.empty() ? "" : sha256(body));
        expectFields(request, "application/octet-stream");
    }
};

TEST_F(UploadsAtService, AVideoIsServedAsItWasSent) {
    const std::string bytes = video();
    const Answer begun = initiate(bytes.size());
    ASSERT_NE(begun.upload, nullptr);
    const std::string id = begun.upload->mediaId;
    EXPECT_NEAR(timeIntervalSince1970(begun.upload->expireDate.value()),
                timeIntervalSince1970(dateSinceNow(3600)), 20);
    const std::size_t half = bytes.size() / 2;
    EXPECT_FALSE(segment(id, bytes.substr(half), 1));
    EXPECT_FALSE(segment(id, bytes.substr(0, half), 0));
    setProcessingTime(0.5);
    const Answer ended = finalize(id);
    ASSERT_NE(ended.upload, nullptr);
    EXPECT_EQ(ended.upload->size, static_cast<std::int64_t>(bytes.size()));
    EXPECT_FALSE(ended.upload->expireDate);
    auto info = ended.upload->processingInfo;
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->state, KLVideoUploadProcessingState::Pending);
    EXPECT_TRUE(eventually([&] {
        const double percent = info->progressPercent.value();
        EXPECT_GT(info->checkAfterSeconds.value(), 0);
        info = status(id).upload->processingInfo;
        EXPECT_GE(info->progressPercent.value(), percent);
        return info->state == KLVideoUploadProcessingState::Succeeded;
    }));
    EXPECT_FALSE(info->checkAfterSeconds);
    EXPECT_TRUE(fetched("media/longforms/" + id + ".mp4") == bytes);
}

TEST_F(UploadsAtService, TheFourRequestsOnTheWire) {
    delegate->acceptLanguage = "en";
    delegate->userAgent = "test/1";
    delegate->keloClient = "client/1";
    service.requests();
    const std::string id = newUpload(1048576);
    expectSent("POST", "", "mediaType=video%2Fmp4&totalBytes=1048576");

    std::string every;
    for (int byte = 0; byte < 256; ++byte) {
        every += static_cast<char>(byte);
    }
    const std::string bytes = every + std::string(1000, '\0') + "\r\n\r\n" + every;
    EXPECT_FALSE(segment(id, bytes, 4));
    expectSent("PUT", "/" + id, "segmentIndex=4", bytes);
    finalize(id);
    expectSent("POST", "/" + id, "");
    status(id);
    expectSent("GET", "/" + id + "/status", "");
}

TEST_F(UploadsAtService, ALargeSegmentArrivesUnchanged) {
    const std::string bytes = anyBytes(64 * mebibyte);
    const std::string id = newUpload(bytes.size());
    service.requests();
    EXPECT_FALSE(segment(id, bytes, 0));
    const SeenRequest request = only();
    EXPECT_EQ(request.header("Content-Length"), "67108864");
    EXPECT_EQ(request.bodyBytes, 67108864);
    EXPECT_EQ(request.bodySha256, sha256(bytes));
    EXPECT_EQ(kept(id), Json::parse(R"([{"index":0,"bytes":67108864}])"));
}

TEST_F(UploadsAtService, ProgressCountsBytesSentAndNeverDecreases) {
    const std::string bytes = anyBytes(16 * mebibyte);
    const std::string id = newUpload(bytes.size());
    setUploadRate(8'000'000);
    const SentSegment sent = start(id, bytes, 0);
    const auto fractions = fractionsOf(sent);
    EXPECT_TRUE(isCompleted(sent.outcome));
    EXPECT_FALSE(sent.outcome->error);
    ASSERT_GT(fractions->size(), 5U);
    EXPECT_TRUE(std::is_sorted(fractions->begin(), fractions->end()));
    EXPECT_GT(fractions->front(), 0);
    EXPECT_LT(fractions->front(), 0.5);
    EXPECT_EQ(fractions->back(), 1);
}

TEST_F(UploadsAtService, AfterAResetInItsMiddleASegmentCanBeSentAgain) {
    const std::string bytes = anyBytes(8 * mebibyte);
    const std::string id = newUpload(bytes.size());
    renewManager(*session); // what a new connection loses, the transport does not send again
    service.requests();
    addFaultToSegments({{"type", "reset"}, {"afterBodyBytes", 3 * mebibyte}});
    const SentSegment sent = start(id, bytes, 0);
    EXPECT_TRUE(isCompleted(sent.outcome));
    EXPECT_TRUE(faultFires());
    passThrough();
    EXPECT_EQ(sent.outcome->completions, 1);
    ASSERT_TRUE(sent.outcome->error);
    EXPECT_TRUE(isHTTPError(*sent.outcome->error, HTTPErrorCode::ConnectionLost))
        << sent.outcome->error->description();
    EXPECT_TRUE(kept(id).empty());
    EXPECT_FALSE(segment(id, bytes, 0));
    const auto requests = sentSegments(2);
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_LT(requests[0].bodyBytes, static_cast<std::int64_t>(bytes.size()));
    EXPECT_EQ(requests[1].bodySha256, sha256(bytes));
    EXPECT_EQ(kept(id).size(), 1U);
}

TEST_F(UploadsAtService, WhatAKeptConnectionLosesIsSentAgainAndProgressDoesNotGoBack) {
    const std::string bytes = anyBytes(8 * mebibyte);
    const std::string id = newUpload(bytes.size()); // which leaves a connection
    service.requests();
    // Once the whole body is there: the client can only be waiting for the response.
    addFaultToSegments({{"type", "reset"}, {"afterBodyBytes", bytes.size() - 1}});
    const SentSegment sent = start(id, bytes, 0);
    const auto fractions = fractionsOf(sent);
    EXPECT_TRUE(isCompleted(sent.outcome));
    EXPECT_TRUE(faultFires());
    passThrough();
    EXPECT_EQ(sent.outcome->completions, 1);
    EXPECT_FALSE(sent.outcome->error) << sent.outcome->error->description();
    const auto requests = sentSegments(2);
    ASSERT_EQ(requests.size(), 2U);
    for (const SeenRequest& request : requests) {
        EXPECT_EQ(request.bodySha256, sha256(bytes));
    }
    EXPECT_NE(requests[0].connection, requests[1].connection);
    ASSERT_FALSE(fractions->empty());
    EXPECT_TRUE(std::is_sorted(fractions->begin(), fractions->end()));
    EXPECT_EQ(fractions->back(), 1);
    EXPECT_EQ(kept(id).size(), 1U);
}

TEST_F(UploadsAtService, ACancelledSegmentLeavesAServerThatDoesNotAnswerOrHasStoppedReading) {
    const std::string bytes = anyBytes(64 * mebibyte);
    for (const Json& stall :
         {Json{{"type", "stall"}}, Json{{"type", "stall"}, {"afterBodyBytes", mebibyte}}}) {
        SCOPED_TRACE(stall);
        const std::string id = newUpload(bytes.size());
        renewManager(*session);
        EXPECT_TRUE(runUntil([&] { return socketsTo(service.port()) == 0; }));
        addFaultToSegments(stall);
        const SentSegment sent = start(id, bytes, 0);
        const auto fractions = fractionsOf(sent);
        EXPECT_TRUE(faultFires());
        passThrough();
        EXPECT_EQ(sent.outcome->completions, 0);
        EXPECT_EQ(socketsTo(service.port()), 1);
        // What fits between the two ends has left; the rest waits.
        EXPECT_TRUE(!stall.contains("afterBodyBytes") || fractions->empty() ||
                    fractions->back() < 0.9);
        expectCancelled(sent);
        EXPECT_TRUE(runUntil([&] { return socketsTo(service.port()) == 0; }));
    }
}

TEST_F(UploadsAtService, ACancelledSegmentEndsInItsMiddleAtTheServer) {
    const std::size_t size = 64 * mebibyte;
    const std::string id = newUpload(size);
    setUploadRate(8'000'000);
    service.requests();
    const SentSegment sent = start(id, anyBytes(size), 0);
    const auto fractions = fractionsOf(sent);
    EXPECT_TRUE(runUntil([&] { return !fractions->empty() && fractions->back() > 0.1; }));
    expectCancelled(sent);
    std::vector<SeenRequest> requests;
    EXPECT_TRUE(eventually([&] {
        requests = service.requests();
        return !requests.empty();
    }));
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_LT(requests[0].bodyBytes, static_cast<std::int64_t>(size));
    EXPECT_GT(requests[0].bodyBytes, 0);
    EXPECT_TRUE(kept(id).empty());
}

TEST_F(UploadsAtService, ARetryIsSentWithoutTheSegmentAndTheHostSendsItAgain) {
    const std::string bytes = video();
    const std::size_t third = bytes.size() / 3;
    const std::string id = newUpload(bytes.size());
    EXPECT_FALSE(segment(id, bytes.substr(0, third), 0));
    int refusals = 0;
    for (const std::int64_t index : {1, 2}) {
        const std::string part = bytes.substr(static_cast<std::size_t>(index) * third,
                                              index == 2 ? std::string::npos : third);
        if (index == 1) {
            service.expire(*delegate->sessionKey);
        } else {
            delegate->sessionKey = "unknown";
        }
        service.requests();
        const Outcome outcome = start(id, part, index).outcome;
        EXPECT_TRUE(isCompleted(outcome));
        ASSERT_TRUE(outcome->error);
        EXPECT_EQ(outcome->error->integer(KLAPIStatusCodeKey), index == 1 ? 103 : 100);
        EXPECT_EQ(delegate->reauthCount, ++refusals);
        EXPECT_EQ(session->queuedRetryCount(), 1U);
        EXPECT_EQ(only().bodySha256, sha256(part));

        delegate->sessionKey = service.signIn(StandIn::username);
        session->handleQueuedRetries(true);
        EXPECT_TRUE(runUntil([&] { return outcome->completions == 2; }));
        ASSERT_TRUE(outcome->error);
        EXPECT_EQ(outcome->error->localizedDescription(), "The segment is empty");
        const SeenRequest retry = only();
        EXPECT_EQ(retry.method, "PUT");
        EXPECT_EQ(retry.path, "/upload/longform-videos/" + id);
        EXPECT_EQ(retry.query, "segmentIndex=" + std::to_string(index));
        EXPECT_EQ(retry.header("Content-Length"), "0");
        EXPECT_EQ(retry.header("kelo-session-id"), *delegate->sessionKey);
        EXPECT_EQ(retry.bodyBytes, 0);
        EXPECT_EQ(kept(id).size(), static_cast<std::size_t>(index));

        EXPECT_FALSE(segment(id, part, index));
    }
    EXPECT_EQ(finalize(id).upload->processingInfo->state, KLVideoUploadProcessingState::Succeeded);
    EXPECT_TRUE(fetched("media/longforms/" + id + ".mp4") == bytes);
}

TEST_F(UploadsAtService, SegmentsRunInParallelEachOnItsOwnEndpoint) {
    constexpr std::size_t segments = 6;
    const std::string bytes = anyBytes(segments * mebibyte);
    const std::string id = newUpload(bytes.size());
    setUploadRate(2'000'000);
    service.requests();
    std::vector<Outcome> outcomes;
    for (std::size_t index = 0; index < segments; ++index) {
        outcomes.push_back(
            start(id, bytes.substr(index * mebibyte, mebibyte), static_cast<std::int64_t>(index))
                .outcome);
    }
    EXPECT_TRUE(runUntil([&] {
        return std::all_of(outcomes.begin(), outcomes.end(),
                           [](const Outcome& outcome) { return outcome->completions == 1; });
    }));
    std::set<std::int64_t> connections;
    for (const auto& request : service.requests()) {
        connections.insert(request.connection);
        const auto index = static_cast<std::size_t>(std::stoi(request.query.substr(13)));
        EXPECT_EQ(request.bodySha256, sha256(bytes.substr(index * mebibyte, mebibyte)));
    }
    EXPECT_GT(connections.size(), 1U) << "they waited for each other";
    for (const Outcome& outcome : outcomes) {
        EXPECT_FALSE(outcome->error);
    }
    EXPECT_EQ(kept(id).size(), segments);
}

} // namespace KeloAPI::testing
