#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/LongformUploadEndpoint.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPI/files/FileEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI {

namespace {

/// Says that a request reached it.
class TellingTransport final : public Transport {
public:
    std::shared_ptr<Exchange> start(const URLRequest& request,
                                    std::shared_ptr<ExchangeObserver> observer,
                                    TransferKind kind) override {
        std::fputs("sent\n", stderr);
        return _silent.start(request, std::move(observer), kind);
    }

private:
    fakes::ScriptedTransport _silent;
};

using ParsedCompletion =
    std::function<void(std::vector<std::shared_ptr<KLEmpty>>, std::optional<Metadata>,
                       const Timeline&, std::optional<Error>)>;

void noSound(std::vector<std::shared_ptr<KLEmpty>> /*items*/, std::optional<Metadata> /*metadata*/,
             const Timeline& /*timeline*/, std::optional<Error> /*error*/) {}

} // namespace

class EmptyCompletionDeathTest : public testing::RegistrySessionTest {
protected:
    EmptyCompletionDeathTest() {
        // A child that is a mere fork has none of the threads that it would wait for in the end.
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        session->setSessionManager(std::make_shared<Manager>(std::make_shared<TellingTransport>()));
    }

    using Calls = std::vector<std::pair<const char*, std::function<void()>>>;

    /// None of these sends anything: each is refused before.
    static void expectRefused(const Calls& calls, const std::string& reason) {
        for (const auto& [name, call] : calls) {
            EXPECT_DEATH(call(), "^KeloAPI: contract violated: " + reason + "\n$") << name;
        }
    }

    std::shared_ptr<Endpoint> endpoint = Endpoint::create(session);
    std::shared_ptr<KLEmptyParser> parser = std::make_shared<KLEmptyParser>();
};

TEST_F(EmptyCompletionDeathTest, IsRefusedByTheBase) {
    const URL file = URL::fileURL("/nowhere/a.mp4");
    void (*const none)(std::vector<std::shared_ptr<KLEmpty>>, std::optional<Metadata>,
                       const Timeline&, std::optional<Error>) = nullptr;
    expectRefused(
        {
            {"request for text", [&] { endpoint->request(Endpoint::TextCompletion()); }},
            {"request", [&] { endpoint->request(parser, ParsedCompletion()); }},
            {"request with a pointer", [&] { endpoint->request(parser, none); }},
            {"upload", [&] { endpoint->upload(parser, Data("a"), ParsedCompletion()); }},
            {"download", [&] { endpoint->download(file, nullptr); }},
            {"the session's download", [&] { session->download(*endpoint, file, nullptr); }},
        },
        "a call needs a completion");
}

TEST_F(EmptyCompletionDeathTest, IsRefusedByTheEndpoints) {
    const auto upload = LongformUploadEndpoint::create();
    const auto views = LongformViewsEndpoint::create("1");
    const auto post = std::make_shared<KLWatchPost>();
    expectRefused(
        {
            {"me", [&] { MeEndpoint::create(session)->get(nullptr); }},
            {"user", [&] { UserEndpoint::create("1")->setFollowingOnTwitter(true, nullptr); }},
            {"timeline", [&] { TimelineEndpoint::create("graph")->fetch(nullptr); }},
            {"action", [&] { LikeActionEndpoint::create(post)->toggle(true, nullptr); }},
            {"sounds", [&] { SoundboardEndpoint::create(session)->fetchSounds(nullptr); }},
            {"views", [&] { views->fetchViews(nullptr); }},
            {"a view", [&] { views->submitView(nullptr); }},
            {"initiate", [&] { upload->initiateUpload(1, nullptr); }},
            {"segment", [&] { upload->uploadSegment("1", Data("a"), 0, nullptr); }},
            {"finalize", [&] { upload->finalizeUpload("1", nullptr); }},
            {"status", [&] { upload->checkStatus("1", nullptr); }},
        },
        "a call needs a completion");
}

TEST_F(EmptyCompletionDeathTest, IsRefusedByTheHandlersOfARequest) {
    const auto serializer = [](const ResponseContent&) { return Result<int>(1); };
    const auto request = httpManager->request(*endpoint);
    expectRefused(
        {
            {"completion", [&] { request->response<int>(serializer, nullptr); }},
            {"serializer", [&] { request->response<int>(nullptr, [](Result<int>, Timeline) {}); }},
            {"handler", [&] { request->response(nullptr); }},
        },
        "a response handler must not be empty");
}

TEST_F(EmptyCompletionDeathTest, IsNotAFunctionOrALambda) {
    session->setSessionManager(httpManager);
    endpoint->request(parser, noSound);
    endpoint->request(parser, [](const auto&, const auto&, const auto&, const auto&) {});
    EXPECT_EQ(transport->requests().size(), 2U);
}

} // namespace KeloAPI
