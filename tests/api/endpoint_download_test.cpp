#include "support/ScriptedSession.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/api/Endpoint.hpp>

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace KeloAPI::testing {

using fakes::ScriptedAnswer;

/// Downloads of an endpoint and of its session.
class EndpointDownloadTest : public ScriptedSessionTest {
protected:
    EndpointDownloadTest() { endpoint->setPath("v/a.mp4"); }

    Session::DownloadCompletion completion() {
        return [this](const URL& sentUrl, std::optional<Error> sentError) {
            url = sentUrl;
            error = std::move(sentError);
            thread = std::this_thread::get_id();
        };
    }

    TemporaryFolder folder;
    const URL place = URL::fileURL(folder.path("a.mp4"));
    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
    std::optional<URL> url;
    std::optional<Error> error;
    std::thread::id thread;
};

TEST_F(EndpointDownloadTest, EndsOnTheMainQueueWithItsDestinationAndTellsOfItsProgress) {
    std::vector<std::int64_t> progress;
    endpoint->setDownloadProgressHandler(
        [&](std::int64_t bytes, std::int64_t total, std::int64_t expected) {
            progress = {bytes, total, expected};
        });
    transport->answer({.body = "video"});
    endpoint->download(place, completion());
    EXPECT_FALSE(url);
    ASSERT_TRUE(runUntil([&] { return url.has_value(); }));
    EXPECT_EQ(url, place);
    EXPECT_EQ(error, std::nullopt);
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(progress, (std::vector<std::int64_t>{5, 5, 5}));
    EXPECT_EQ(folder.read("a.mp4"), "video");
    EXPECT_EQ(transport->requests().front().url->absoluteString(),
              "https://service.example/v/a.mp4");
}

TEST_F(EndpointDownloadTest, PassesItsErrorOn) {
    const Error lost = httpError(HTTPErrorCode::ConnectionLost, "gone");
    transport->answer(ScriptedAnswer::failure(lost));
    session->download(*endpoint, place, completion());
    ASSERT_TRUE(runUntil([&] { return url.has_value(); }));
    EXPECT_EQ(url, place);
    EXPECT_EQ(error, lost);
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(EndpointDownloadTest, EndsWhereItFinishesIfThatIsAskedFor) {
    std::promise<std::thread::id> finished;
    transport->answer({.body = "video"});
    endpoint->download(
        place,
        [&](const URL& sentUrl, const std::optional<Error>& sentError) {
            EXPECT_EQ(sentUrl, place);
            EXPECT_FALSE(sentError);
            finished.set_value(std::this_thread::get_id());
        },
        DownloadDelivery::AtOnce);
    // The main queue does not run meanwhile.
    auto finishedOn = finished.get_future();
    ASSERT_EQ(finishedOn.wait_for(timeLimit), std::future_status::ready);
    EXPECT_NE(finishedOn.get(), std::this_thread::get_id());
}

TEST_F(EndpointDownloadTest, LastsAsLongAsItsEndpoint) {
    const std::weak_ptr<Endpoint> watched = endpoint;
    endpoint->download(place, completion());
    endpoint.reset();
    EXPECT_FALSE(watched.expired());
    transport->answer({.body = "video"});
    EXPECT_TRUE(runUntil([&] { return url && watched.expired(); }));
}

TEST_F(EndpointDownloadTest, WithoutACompletionStopsTheProcess) {
    const char* const reason = "contract violated: a call needs a completion";
    EXPECT_DEATH(endpoint->download(place, nullptr), reason);
    EXPECT_DEATH(session->download(*endpoint, place, nullptr), reason);
}

} // namespace KeloAPI::testing
