#include "support/ServiceTest.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>

#include <pthread.h>

#include <array>
#include <atomic>
#include <mutex>
#include <semaphore>

namespace KeloAPI::testing {

namespace {

std::string currentThreadName() {
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

using UserClosure = KLClosureParser<KLWatchUser>;

} // namespace

/// On which thread a response is read, and whom a slow reader holds up.
class ReadingPlaceAtService : public ServiceTest {
protected:
    ReadingPlaceAtService() {
        // The trace line is written by the thread that reads.
        Diagnostics::setSink([this](std::string_view) {
            const std::lock_guard lock(_mutex);
            _lastReader = currentThreadName();
        });
    }

    std::string lastReader() {
        const std::lock_guard lock(_mutex);
        return _lastReader;
    }

    template <class P>
    void send(std::shared_ptr<P> parser, std::string path = "users/me",
              Parameters parameters = {}) {
        // A response that came before its handler was attached would be read on the response queue.
        service.addFault({{"match", {{"path", "/" + path}}},
                          {"action", {{"type", "delay"}, {"milliseconds", 300}}}});
        const auto endpoint = Endpoint::create(session);
        endpoint->setPath(std::move(path));
        endpoint->setParameters(std::move(parameters));
        endpoint->request(std::move(parser),
                          [this](const auto& items, const std::optional<Metadata>&, const Timeline&,
                                 const std::optional<Error>& error) {
                              EXPECT_FALSE(error) << error->description();
                              EXPECT_FALSE(items.empty());
                              ++ended;
                          });
    }
    bool endedReaches(int count) {
        return runUntil([&] { return ended >= count; });
    }

    int ended = 0;

private:
    std::mutex _mutex;
    std::string _lastReader;
};

TEST_F(ReadingPlaceAtService, IsTheNetworkThreadUnlessTheResponseIsLong) {
    send(std::make_shared<UserParser>());
    ASSERT_TRUE(endedReaches(1));
    EXPECT_EQ(lastReader(), "kelo-calls");
}

TEST_F(ReadingPlaceAtService, IsAQueueForALongResponse) {
    send(std::make_shared<KLEmptyParser>(), "timelines/popular", {{"size", 100}});
    ASSERT_TRUE(endedReaches(1));
    EXPECT_EQ(lastReader(), "KeloAPI.models");
}

TEST_F(ReadingPlaceAtService, IsTheResponseQueueForWhatAHostHasWritten) {
    std::string parserThread;
    send(std::make_shared<UserClosure>([&parserThread](const JsonObject&) {
        parserThread = currentThreadName();
        return std::make_shared<KLWatchUser>();
    }));
    ASSERT_TRUE(endedReaches(1));
    EXPECT_EQ(parserThread, "KeloAPI.respons");
    // A parser that is known by its interface only may be a host's.
    const std::shared_ptr<JsonParser<KLWatchUser>> known = std::make_shared<UserParser>();
    send(known);
    ASSERT_TRUE(endedReaches(2));
    EXPECT_EQ(lastReader(), "KeloAPI.respons");
}

TEST_F(ReadingPlaceAtService, AHostsSlowParserHoldsUpNoCallWithTheLibrarysOwn) {
    std::binary_semaphore parsing{0};
    std::binary_semaphore parsed{0};
    send(std::make_shared<UserClosure>([&](const JsonObject&) {
        parsing.release();
        EXPECT_TRUE(parsed.try_acquire_for(timeLimit));
        return std::make_shared<KLWatchUser>();
    }));
    ASSERT_TRUE(parsing.try_acquire_for(timeLimit));
    // However long the response, and whether or not it was there before its handler.
    send(std::make_shared<UserParser>());
    ASSERT_TRUE(endedReaches(1)) << "the other call waits for the host's parser";
    send(std::make_shared<KLEmptyParser>(), "timelines/popular", {{"size", 100}});
    ASSERT_TRUE(endedReaches(2)) << "the long response waits for the host's parser";
    parsed.release();
    ASSERT_TRUE(endedReaches(3));
}

} // namespace KeloAPI::testing
