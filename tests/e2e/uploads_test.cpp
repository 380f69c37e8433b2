#include "UploadTest.hpp"

#include <KeloAPI/api/ResponseEnvelope.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <set>
#include <sstream>

namespace KeloAPI {

using Json = nlohmann::json;
using testing::runFor;
using testing::runUntil;
using testing::SeenRequest;
using testing::StandIn;

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t mebibyte = std::size_t{1} << 20;

double secondsSince(Clock::time_point moment) {
    return std::chrono::duration<double>(Clock::now() - moment).count();
}

using Fields = std::vector<std::pair<std::string, std::string>>;

Fields sorted(Fields fields) {
    std::sort(fields.begin(), fields.end());
    return fields;
}

Fields with(Fields fields, const Fields& more) {
    fields.insert(fields.end(), more.begin(), more.end());
    return sorted(fields);
}

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

class UploadsAtService : public testing::UploadTest {
protected:
    /// The only request since the last look at the log.
    SeenRequest only() {
        const auto requests = service.requests();
        EXPECT_EQ(requests.size(), 1U);
        return requests.empty() ? SeenRequest() : requests.back();
    }
    void addFaultToSegments(const Json& action, int skip = 0) {
        service.addFault({{"match", {{"method", "PUT"}}}, {"skip", skip}, {"action", action}});
    }
    bool faultFires() {
        return runUntil([&] { return service.faults().back().at("fired") == 1; });
    }
    /// Cancels and expects the one completion to come soon.
    void expectCancelled(EndpointRequest& handle, const Outcome& outcome) {
        const auto before = Clock::now();
        handle.cancel();
        EXPECT_TRUE(runUntil([&] { return outcome->completions > 0; }));
        EXPECT_LT(secondsSince(before), 5);
        ASSERT_TRUE(outcome->error);
        EXPECT_EQ(outcome->error->domain(), HTTPErrorDomain);
        EXPECT_EQ(outcome->error->code(), static_cast<int>(HTTPErrorCode::Cancelled));
        passThrough();
        EXPECT_EQ(outcome->completions, 1);
    }
    bool hasNoConnection() {
        // The look itself takes one.
        return service.connections().at("open").get<int>() <= 1;
    }
};

TEST_F(UploadsAtService, AVideoIsServedAsItWasSent) {
    const std::string bytes = video();
    const Answer begun = initiate(bytes.size());
    ASSERT_NE(begun.upload, nullptr);
    const std::string id = begun.upload->mediaId();
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
    ASSERT_NE(ended.upload->processingInfo, nullptr);
    EXPECT_EQ(ended.upload->processingInfo->state(), KLVideoUploadProcessingState::Pending);
    auto info = ended.upload->processingInfo;
    double percent = 0;
    bool worked = false;
    for (int asked = 0; asked < 100 && info->state() != KLVideoUploadProcessingState::Succeeded;
         ++asked) {
        ASSERT_NE(info->state(), KLVideoUploadProcessingState::Failed);
        worked = worked || info->state() == KLVideoUploadProcessingState::InProgress;
        EXPECT_GE(info->progressPercent.value(), percent);
        percent = info->progressPercent.value();
        runFor(std::chrono::milliseconds(static_cast<int>(1000 * info->checkAfterSeconds.value())));
        info = status(id).upload->processingInfo;
    }
    EXPECT_EQ(info->state(), KLVideoUploadProcessingState::Succeeded);
    EXPECT_FALSE(info->checkAfterSeconds);
    EXPECT_TRUE(worked);
    EXPECT_TRUE(fetched("media/longforms/" + id + ".mp4") == bytes);
}

TEST_F(UploadsAtService, WhatIsNoVideoFails) {
    const std::string id = newUpload(10);
    EXPECT_FALSE(segment(id, anyBytes(10), 0));
    EXPECT_EQ(finalize(id).upload->processingInfo->state(), KLVideoUploadProcessingState::Failed);
    EXPECT_EQ(status(id).upload->processingInfo->state(), KLVideoUploadProcessingState::Failed);
}

TEST_F(UploadsAtService, TheFourRequestsOnTheWire) {
    delegate->acceptLanguage = "en";
    delegate->userAgent = "test/1";
    delegate->keloClient = "client/1";
    service.requests();

    const std::string id = newUpload(1048576);
    SeenRequest request = only();
    EXPECT_NE(request.header("Accept-Encoding"), "");
    const Fields always = sorted({{"Host", service.host()},
                                  {"Accept-Encoding", request.header("Accept-Encoding")},
                                  {"Accept-Language", "en"},
                                  {"User-Agent", "test/1"},
                                  {"X-Kelo-Client", "client/1"},
                                  {"kelo-session-id", StandIn::sessionKey}});
    const Fields emptyBody = with(always, {{"Content-Length", "0"}});
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/upload/longform-videos");
    EXPECT_EQ(request.query, "mediaType=video%2Fmp4&totalBytes=1048576");
    EXPECT_EQ(sorted(request.headers), emptyBody);
    EXPECT_EQ(request.bodyBytes, 0);

    std::string every;
    for (int byte = 0; byte < 256; ++byte) {
        every += static_cast<char>(byte);
    }
    const std::string bytes = every + std::string(1000, '\0') + "\r\n\r\n" + every;
    EXPECT_FALSE(segment(id, bytes, 4));
    request = only();
    EXPECT_EQ(request.method, "PUT");
    EXPECT_EQ(request.path, "/upload/longform-videos/" + id);
    EXPECT_EQ(request.query, "segmentIndex=4");
    EXPECT_EQ(sorted(request.headers),
              with(always, {{"Content-Type", "application/octet-stream"},
                            {"Content-Length", std::to_string(bytes.size())}}));
    EXPECT_TRUE(request.body == bytes);
    EXPECT_EQ(request.bodySha256, sha256(bytes));

    finalize(id);
    request = only();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/upload/longform-videos/" + id);
    EXPECT_EQ(request.query, "");
    EXPECT_EQ(sorted(request.headers), emptyBody);
    EXPECT_EQ(request.bodyBytes, 0);

    status(id);
    request = only();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/upload/longform-videos/" + id + "/status");
    EXPECT_EQ(request.query, "");
    EXPECT_EQ(sorted(request.headers), always);
    EXPECT_EQ(request.bodyBytes, 0);
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
    setUploadRate(20'000'000);
    const auto sent = start(id, bytes, 0);
    std::vector<double> fractions;
    sent.handle->setProgressHandler([&](EndpointRequest&, double fraction) {
        EXPECT_EQ(sent.outcome->completions, 0);
        fractions.push_back(fraction);
    });
    EXPECT_TRUE(runUntil([&] { return sent.outcome->completions > 0; }));
    EXPECT_FALSE(sent.outcome->error);
    ASSERT_GT(fractions.size(), 5U);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_GT(fractions.front(), 0);
    EXPECT_LT(fractions.front(), 0.5);
    EXPECT_EQ(fractions.back(), 1);
}

TEST_F(UploadsAtService, AResetInTheMiddleOfASegmentIsOneError) {
    const std::string bytes = anyBytes(8 * mebibyte);
    const std::string id = newUpload(bytes.size());
    // On a fresh connection: a request that dies with a kept one is sent again on a new one.
    testing::renewManager(*session);
    addFaultToSegments({{"type", "reset"}, {"afterBodyBytes", 3 * mebibyte}});
    const Outcome outcome = start(id, bytes, 0).outcome;
    EXPECT_TRUE(runUntil([&] { return outcome->completions > 0; }));
    ASSERT_TRUE(outcome->error);
    EXPECT_EQ(outcome->error->domain(), HTTPErrorDomain);
    EXPECT_EQ(outcome->error->code(), static_cast<int>(HTTPErrorCode::ConnectionLost));
    EXPECT_TRUE(faultFires());
    passThrough();
    EXPECT_EQ(outcome->completions, 1);
    EXPECT_TRUE(kept(id).empty());
    EXPECT_FALSE(segment(id, bytes, 0));
    EXPECT_EQ(kept(id).size(), 1U);
}

TEST_F(UploadsAtService, AfterAResetOfAKeptConnectionTheSegmentArrivesWhole) {
    const std::string bytes = anyBytes(8 * mebibyte);
    const std::string id = newUpload(bytes.size());
    service.requests();
    addFaultToSegments({{"type", "reset"}, {"afterBodyBytes", 3 * mebibyte}});
    const auto sent = start(id, bytes, 0);
    std::vector<double> fractions;
    sent.handle->setProgressHandler(
        [&](EndpointRequest&, double fraction) { fractions.push_back(fraction); });
    EXPECT_TRUE(runUntil([&] { return sent.outcome->completions > 0; }));
    EXPECT_TRUE(faultFires());
    // The transport sends it once more, unless the connection broke while it was being looked at.
    if (sent.outcome->error) {
        EXPECT_TRUE(isHTTPError(*sent.outcome->error, HTTPErrorCode::ConnectionLost))
            << sent.outcome->error->description();
        const auto again = start(id, bytes, 0);
        EXPECT_TRUE(runUntil([&] { return again.outcome->completions > 0; }));
        EXPECT_FALSE(again.outcome->error);
    }
    // The one that broke off may enter the log last.
    std::vector<std::pair<std::int64_t, std::string>> requests;
    EXPECT_TRUE(runUntil([&] {
        for (const SeenRequest& request : service.requests()) {
            requests.emplace_back(request.bodyBytes, request.bodySha256);
        }
        return requests.size() >= 2;
    }));
    ASSERT_EQ(requests.size(), 2U);
    std::sort(requests.begin(), requests.end());
    EXPECT_LT(requests[0].first, static_cast<std::int64_t>(bytes.size()));
    EXPECT_EQ(requests[1].second, sha256(bytes));
    EXPECT_EQ(kept(id).size(), 1U);
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
}

TEST_F(UploadsAtService, ACancelledSegmentLeavesAServerThatDoesNotAnswer) {
    const std::string id = newUpload(mebibyte);
    testing::renewManager(*session);
    addFaultToSegments({{"type", "stall"}});
    const auto sent = start(id, anyBytes(mebibyte), 0);
    EXPECT_TRUE(faultFires());
    EXPECT_FALSE(hasNoConnection());
    const auto before = Clock::now();
    expectCancelled(*sent.handle, sent.outcome);
    EXPECT_TRUE(runUntil([&] { return hasNoConnection(); }));
    EXPECT_LT(secondsSince(before), 5);
}

TEST_F(UploadsAtService, ACancelledSegmentLeavesAServerThatStoppedReading) {
    const std::size_t size = 64 * mebibyte;
    const std::string id = newUpload(size);
    testing::renewManager(*session);
    EXPECT_TRUE(runUntil([&] { return socketsTo(service.port()) == 0; }));
    addFaultToSegments({{"type", "stall"}, {"afterBodyBytes", mebibyte}});
    const auto sent = start(id, anyBytes(size), 0);
    double fraction = 0;
    sent.handle->setProgressHandler(
        [&](EndpointRequest&, double reported) { fraction = reported; });
    EXPECT_TRUE(faultFires());
    passThrough();
    // What fits between the two ends has left; the rest waits.
    EXPECT_LT(fraction, 0.9);
    EXPECT_EQ(sent.outcome->completions, 0);
    EXPECT_EQ(socketsTo(service.port()), 1);
    const auto before = Clock::now();
    expectCancelled(*sent.handle, sent.outcome);
    EXPECT_TRUE(runUntil([&] { return socketsTo(service.port()) == 0; }));
    EXPECT_LT(secondsSince(before), 5);
}

TEST_F(UploadsAtService, ACancelledSegmentEndsInItsMiddleAtTheServer) {
    const std::size_t size = 64 * mebibyte;
    const std::string id = newUpload(size);
    setUploadRate(8'000'000);
    service.requests();
    const auto sent = start(id, anyBytes(size), 0);
    double fraction = 0;
    sent.handle->setProgressHandler(
        [&](EndpointRequest&, double reported) { fraction = reported; });
    EXPECT_TRUE(runUntil([&] { return fraction > 0.1; }));
    const auto before = Clock::now();
    expectCancelled(*sent.handle, sent.outcome);
    std::vector<SeenRequest> requests;
    EXPECT_TRUE(runUntil([&] {
        if (requests.empty()) { // asked once more in the end
            requests = service.requests();
        }
        return !requests.empty();
    }));
    EXPECT_LT(secondsSince(before), 5);
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
        EXPECT_TRUE(runUntil([&] { return outcome->completions == 1; }));
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
    EXPECT_EQ(finalize(id).upload->processingInfo->state(),
              KLVideoUploadProcessingState::Succeeded);
    EXPECT_TRUE(fetched("media/longforms/" + id + ".mp4") == bytes);
}

TEST_F(UploadsAtService, AnExpiredUploadIsAnError) {
    const std::string id = newUpload(10);
    service.call("POST", "/_service/uploads/" + id + "/expire");
    const auto refused = segment(id, anyBytes(10), 0);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->localizedDescription(), "The upload has expired");
    const Answer ended = finalize(id);
    EXPECT_EQ(ended.upload, nullptr);
    EXPECT_EQ(ended.error->integer(KLAPIStatusCodeKey), 410);
}

TEST_F(UploadsAtService, AGapIsToldAtTheEndAndCanBeFilled) {
    const std::string bytes = video();
    const std::string id = newUpload(bytes.size());
    EXPECT_FALSE(segment(id, bytes.substr(0, 100), 0));
    EXPECT_FALSE(segment(id, bytes.substr(200), 2));
    const Answer refused = finalize(id);
    EXPECT_EQ(refused.upload, nullptr);
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->localizedDescription(), "Segment 1 is missing");
    EXPECT_FALSE(segment(id, bytes.substr(100, 100), 1));
    EXPECT_NE(finalize(id).upload, nullptr);
    EXPECT_TRUE(fetched("media/longforms/" + id + ".mp4") == bytes);
}

TEST_F(UploadsAtService, AServiceThatFailsAtTheEndIsOneErrorAndCanBeAskedAgain) {
    const std::string bytes = video();
    const std::string id = newUpload(bytes.size());
    EXPECT_FALSE(segment(id, bytes, 0));
    for (const Json& action :
         {Json{{"type", "status"}, {"status", 503}},
          Json{{"type", "error"}, {"code", 500}, {"status", 500}},
          Json{{"type", "body"}, {"body", "<html>"}}, Json{{"type", "reset"}, {"afterBytes", 30}},
          Json{{"type", "body"}, {"body", R"({"data":{"mediaId":"x","processingInfo":{}}})"}}}) {
        testing::renewManager(*session);
        service.addFault(
            {{"match", {{"path", "/upload/longform-videos/" + id}}}, {"action", action}});
        const Answer refused = finalize(id);
        EXPECT_EQ(refused.upload, nullptr) << action;
        EXPECT_TRUE(refused.error) << action;
        EXPECT_EQ(refused.completions, 1) << action;
        EXPECT_TRUE(faultFires()) << action;
    }
    EXPECT_EQ(finalize(id).upload->processingInfo->state(),
              KLVideoUploadProcessingState::Succeeded);
}

TEST_F(UploadsAtService, SegmentsRunInParallelEachOnItsOwnEndpoint) {
    constexpr std::size_t segments = 6;
    const std::string bytes = anyBytes(segments * mebibyte);
    const std::string id = newUpload(bytes.size());
    setUploadRate(2'000'000);
    service.requests();
    std::vector<Outcome> outcomes;
    const auto before = Clock::now();
    for (std::size_t index = 0; index < segments; ++index) {
        outcomes.push_back(
            start(id, bytes.substr(index * mebibyte, mebibyte), static_cast<std::int64_t>(index))
                .outcome);
    }
    EXPECT_TRUE(runUntil([&] {
        return std::all_of(outcomes.begin(), outcomes.end(),
                           [](const Outcome& outcome) { return outcome->completions == 1; });
    }));
    const double together = secondsSince(before);
    std::set<std::int64_t> connections;
    for (const auto& request : service.requests()) {
        connections.insert(request.connection);
        const auto index = static_cast<std::size_t>(std::stoi(request.query.substr(13)));
        EXPECT_EQ(request.bodySha256, sha256(bytes.substr(index * mebibyte, mebibyte)));
    }
    EXPECT_GT(connections.size(), 1U);
    // One after the other they would take half a second each.
    EXPECT_LT(together, 0.5 * segments);
    for (const Outcome& outcome : outcomes) {
        EXPECT_FALSE(outcome->error);
    }
    EXPECT_EQ(kept(id).size(), segments);
}

} // namespace KeloAPI
