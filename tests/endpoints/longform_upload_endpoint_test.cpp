#include "support/Awaited.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/internal/completeUpload.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

namespace KeloAPI::testing {

class LongformUploadEndpointTest : public RegistrySessionTest {
protected:
    using Answer = std::tuple<std::shared_ptr<KLVideoUpload>, std::optional<Error>>;

    Answer status(const std::string& body) {
        transport->answer(fakes::ScriptedAnswer::json(body));
        return awaited<std::shared_ptr<KLVideoUpload>, std::optional<Error>>(
            [this](auto completion) { endpoint->checkStatus("m-1", completion); });
    }

    std::shared_ptr<LongformUploadEndpoint> endpoint = LongformUploadEndpoint::create();
};

TEST_F(LongformUploadEndpointTest, PassesAnySegmentOnWithoutCopyingIt) {
    const auto ignore = [](const std::optional<Error>&) {};
    const auto owner = std::make_shared<std::string>(1'000'000, 's');
    const Data data(owner, std::as_bytes(std::span(owner->data(), owner->size())));
    endpoint->uploadSegment("m-1", data, 0, ignore);
    EXPECT_EQ(lastRequest().body->bytes().data(), data.bytes().data());
    endpoint->uploadSegment("m-1", Data(), -3, ignore);
    EXPECT_EQ(lastRequest().url->query(), "segmentIndex=-3");
    EXPECT_EQ(lastBody(), "");
    // Nothing of it stays with the call that follows.
    endpoint->finalizeUpload("m-1", [](const auto&, const auto&) {});
    EXPECT_EQ(lastRequest().method, Method::POST);
    EXPECT_EQ(lastRequest().url->absoluteString(),
              "https://service.example/upload/longform-videos/m-1");
    EXPECT_FALSE(lastRequest().body);
    EXPECT_EQ(lastRequest().headerFields.count("content-type"), 0U);
}

TEST_F(LongformUploadEndpointTest, HasNoUploadWhereItIsIncomplete) {
    for (const char* body :
         {R"({"data": {"processingInfo": {"state": "pending"}}})",
          R"({"data": {"mediaId": "m-1", "processingInfo": {"state": "done"}}})"}) {
        const auto [upload, error] = status(body);
        EXPECT_EQ(upload, nullptr) << body;
        ASSERT_TRUE(error) << body;
        EXPECT_EQ(error->code(), -1) << body;
        ASSERT_TRUE(error->underlying()) << body;
        EXPECT_EQ(error->underlying()->code(), JsonParseError::InsufficientData) << body;
    }
    EXPECT_EQ(status(R"({"data": {"records": []}})"), Answer()) << "nor an error";
}

TEST_F(LongformUploadEndpointTest, TakesTheFirstUploadAndDropsAnErrorBesideIt) {
    Answer answer;
    const auto note = [&](std::shared_ptr<KLVideoUpload> upload, std::optional<Error> error) {
        answer = {std::move(upload), std::move(error)};
    };
    const auto first = std::make_shared<KLVideoUpload>("1");
    completeUpload(first, Error("test", 1), note);
    EXPECT_EQ(answer, Answer(first, {}));
    completeUpload(nullptr, Error("test", 1), note);
    EXPECT_EQ(std::get<0>(answer), nullptr);
    EXPECT_EQ(std::get<1>(answer)->code(), 1);
}

} // namespace KeloAPI::testing
