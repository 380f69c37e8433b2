#include "support/EndpointMaking.hpp"
#include "support/MainLoop.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/internal/completeUpload.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class LongformUploadEndpointTest : public testing::RegistrySessionTest {
protected:
    LongformUploadEndpoint::Completion note() {
        return [this](std::shared_ptr<KLVideoUpload> sent, std::optional<Error> sentError) {
            upload = std::move(sent);
            error = std::move(sentError);
            ++completions;
        };
    }
    void answer(const std::string& body) {
        const int before = completions;
        transport->answer(ScriptedAnswer::json(body));
        EXPECT_TRUE(runUntil([&] { return completions != before; }));
    }
    /// The completion of a segment.
    std::function<void(std::optional<Error>)> noteSegment() {
        return [this](std::optional<Error> sentError) {
            error = std::move(sentError);
            ++completions;
        };
    }
    void expectLast(Method method, const std::string& url) const {
        EXPECT_EQ(lastRequest().method, method);
        EXPECT_EQ(lastUrl(), "https://service.example/upload/longform-videos" + url);
    }
    std::string lastUrl() const { return lastRequest().url->absoluteString(); }

    std::shared_ptr<LongformUploadEndpoint> endpoint = LongformUploadEndpoint::create();
    std::shared_ptr<KLVideoUpload> upload;
    std::optional<Error> error;
    int completions = 0;
};

static_assert(!testing::createdWith<LongformUploadEndpoint, std::shared_ptr<Session>>);
static_assert(testing::createdWith<LongformUploadEndpoint>);

TEST_F(LongformUploadEndpointTest, UsesTheRegistrysSession) {
    EXPECT_EQ(endpoint->session(), session);
}

TEST_F(LongformUploadEndpointTest, DoesNotCopyASegment) {
    const auto owner = std::make_shared<std::string>(1'000'000, 's');
    const Data data(owner, std::as_bytes(std::span(owner->data(), owner->size())));
    endpoint->uploadSegment("m-1", data, 0, noteSegment());
    EXPECT_EQ(lastRequest().body->bytes().data(), data.bytes().data());
}

TEST_F(LongformUploadEndpointTest, PassesAnyIndexOn) {
    endpoint->uploadSegment("m-1", Data(), -3, noteSegment());
    EXPECT_TRUE(lastUrl().ends_with("?segmentIndex=-3")) << lastUrl();
    EXPECT_EQ(lastBody(), "");
}

TEST_F(LongformUploadEndpointTest, FinalizesWithoutParametersAndBody) {
    endpoint->uploadSegment("m-1", Data(std::string("s")), 0, noteSegment());
    endpoint->finalizeUpload("m-1", note());
    expectLast(Method::POST, "/m-1");
    EXPECT_FALSE(lastRequest().body);
    EXPECT_EQ(lastRequest().headerFields.count("content-type"), 0U);
}

TEST_F(LongformUploadEndpointTest, ReportsAnErrorWithoutUpload) {
    endpoint->checkStatus("m-1", note());
    answer(R"({"error": "gone", "code": 410})");
    EXPECT_EQ(upload, nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), 410);
    for (const char* body :
         {R"({"data": {"processingInfo": {"state": "pending"}}})",
          R"({"data": {"mediaId": "m-1", "processingInfo": {"state": "done"}}})"}) {
        endpoint->checkStatus("m-1", note());
        answer(body);
        EXPECT_EQ(upload, nullptr) << body;
        ASSERT_TRUE(error) << body;
        EXPECT_EQ(error->code(), -1) << body;
        ASSERT_TRUE(error->underlying()) << body;
        EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData) << body;
    }
}

TEST_F(LongformUploadEndpointTest, EveryHandleCancels) {
    const std::vector<std::function<std::shared_ptr<EndpointRequest>()>> calls = {
        [this] { return endpoint->initiateUpload(1, note()); },
        [this] { return endpoint->finalizeUpload("m-1", note()); },
        [this] { return endpoint->checkStatus("m-1", note()); }};
    for (const auto& call : calls) {
        const int before = completions;
        const auto handle = call();
        ASSERT_NE(handle, nullptr);
        handle->cancel();
        EXPECT_EQ(completions, before) << "not within the call";
        EXPECT_TRUE(runUntil([&] { return completions != before; }));
        EXPECT_EQ(completions, before + 1);
        EXPECT_EQ(upload, nullptr);
        ASSERT_TRUE(error);
        EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::Cancelled)) << error->description();
    }
}

TEST_F(LongformUploadEndpointTest, HasNeitherUploadNorErrorOfAnEmptyList) {
    endpoint->checkStatus("m-1", note());
    answer(R"({"data": {"records": []}})");
    EXPECT_EQ(upload, nullptr);
    EXPECT_FALSE(error);
    EXPECT_EQ(completions, 1);
}

TEST_F(LongformUploadEndpointTest, TakesTheFirstUploadAndDropsAnErrorBesideIt) {
    const auto first = std::make_shared<KLVideoUpload>("1");
    completeUpload(first, Error("test", 1), note());
    EXPECT_EQ(upload, first);
    EXPECT_FALSE(error);
    completeUpload(nullptr, Error("test", 1), note());
    EXPECT_EQ(upload, nullptr);
    EXPECT_EQ(error->code(), 1);
}

} // namespace KeloAPI
