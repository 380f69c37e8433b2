#include "LoadTest.hpp"
#include "support/OwnProcess.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "support/Shortage.hpp"

#include <atomic>
#include <optional>
#include <random>
#include <thread>
#include <vector>

namespace KeloAPI::testing {
namespace {

class ManyCallsTest : public LoadTest {
protected:
    /// Each that ends starts the next, so that so many stay in flight.
    void keepInFlight(const std::shared_ptr<Manager>& manager, const std::string& url, int all,
                      int inFlight) {
        const auto next = [this, manager, url, all](const auto& self) -> void {
            if (started < all) {
                call(manager, url, [self] { self(self); });
            }
        };
        for (int i = 0; i < inFlight; ++i) {
            next(next);
        }
    }

    void tenThousand(const std::string& protocol, const std::string& url) {
        constexpr int calls = 10'000;
        const auto began = Clock::now();
        const auto manager = makeManager();
        keepInFlight(manager, url, calls, 256);
        EXPECT_TRUE(allEnd());
        EXPECT_EQ(good, calls);
        say("256 in flight over " + protocol, began, calls);
    }
};

TEST_F(ManyCallsTest, TenThousandOverHTTP1) {
    tenThousand("HTTP/1.1", server->serialUrl("/quick"));
}

TEST_F(ManyCallsTest, TenThousandOverHTTP2) {
    tenThousand("HTTP/2", server->url("/quick"));
}

TEST_F(ManyCallsTest, FromAHundredThreads) {
    constexpr int threads = 100;
    constexpr int each = 20;
    const auto manager = makeManager();
    const auto began = Clock::now();
    std::atomic<int> completed = 0;
    std::atomic<int> succeeded = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < threads; ++i) {
        callers.emplace_back([&] {
            for (int n = 0; n < each; ++n) {
                manager->request(FixedRequest(server->url("/quick")))
                    ->response([&](const ResponseContent& content, Timeline) {
                        return [&, good = !content.error] {
                            ++completed;
                            succeeded += good ? 1 : 0;
                        };
                    });
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    EXPECT_TRUE(runUntil([&] { return completed == threads * each; }, patience));
    EXPECT_EQ(succeeded, threads * each);
    say("started by 100 threads", began, threads * each);
}

TEST_F(ManyCallsTest, FiveThousandAtOnceUnderFewDescriptors) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers have needs of their own";
    }
    constexpr int calls = 5'000;
    const LoweredLimit descriptors(RLIMIT_NOFILE, 256);
    const auto manager = makeManager();
    const auto began = Clock::now();
    for (int i = 0; i < calls; ++i) {
        call(manager, server->serialUrl("/quick"));
    }
    EXPECT_TRUE(allEnd());
    EXPECT_EQ(good, calls);
    say("all at once, with 256 descriptors", began, calls);
}

TEST_F(ManyCallsTest, GoOutInTheOrderOfTheirStart) {
    constexpr int calls = 1'000;
    std::vector<std::string> seen; // by the one connection's thread
    RawServer one([&seen](RawConnection& connection) {
        connection.serve([&seen](const std::string& request) {
            seen.push_back(pathOf(request));
            return okResponse("x");
        });
    });
    TransportSettings settings;
    settings.maxCallConnectionsPerHost = 1;
    auto manager = makeManager(settings);
    std::vector<std::string> wanted;
    const auto began = Clock::now();
    for (int i = 0; i < calls; ++i) {
        wanted.push_back("/" + std::to_string(i));
        call(manager, one.url(wanted.back()));
    }
    EXPECT_TRUE(allEnd());
    EXPECT_EQ(seen, wanted);
    say("in order over one connection", began, calls);
}

TEST_F(ManyCallsTest, CancelledAtRandomMomentsCompleteOnce) {
    constexpr int calls = 10'000;
    std::minstd_rand random(7); // always the same moments, as far as the machine allows
    const auto manager = makeManager();
    const auto began = Clock::now();
    std::vector<std::shared_ptr<Request>> inFlight;
    for (int i = 0; i < calls; ++i) {
        inFlight.push_back(call(manager, server->url(i % 50 == 0 ? "/slow" : "/quick")));
        if (inFlight.size() == 64) {
            MainQueue::main().runUntil([&] { return random() % 4 == 0; },
                                       std::chrono::milliseconds(random() % 3));
            for (const auto& request : inFlight) {
                if (random() % 3 != 0) {
                    request->cancel();
                }
            }
            inFlight.clear();
        }
    }
    EXPECT_TRUE(allEnd());
    EXPECT_GT(good, 0);
    EXPECT_LT(good, calls);
    say(std::to_string(calls - good) + " of them cancelled in time", began, calls);
}

TEST_F(ManyCallsTest, ManagersMayGoInTheirCallsCompletions) {
    constexpr int rounds = 300;
    const auto began = Clock::now();
    for (int round = 0; round < rounds; ++round) {
        auto manager = makeManager();
        const auto held = std::make_shared<std::shared_ptr<Manager>>(manager);
        for (int i = 0; i < 4; ++i) {
            call(manager, server->serialUrl("/quick"), [held] { held->reset(); });
        }
        manager.reset();
        ASSERT_TRUE(allEnd());
    }
    // The first completion of a round ends its manager, and the calls behind it with it.
    EXPECT_GE(good, rounds);
    say("by 300 managers that go in a completion", began, started);
}

TEST_F(ManyCallsTest, SessionsMayGoInTheirCallsCompletions) {
    constexpr int rounds = 300;
    const TemporaryFolder folder;
    const auto began = Clock::now();
    for (int round = 0; round < rounds; ++round) {
        auto session = std::make_shared<Session>(SessionType::Authenticated);
        session->setSessionManager(makeManager());
        const auto held = std::make_shared<std::shared_ptr<Session>>(session);
        for (int i = 0; i < 3; ++i) {
            heard(session->request(FixedRequest(server->serialUrl("/quick"))),
                  [held] { held->reset(); });
        }
        ++started;
        session->download(FixedRequest(server->url("/files/loop.mp4")),
                          URL::fileURL(folder.path("loop")),
                          [this, held](const URL&, const std::optional<Error>& error) {
                              ++ended;
                              good += error ? 0 : 1;
                              held->reset();
                          });
        session.reset();
        ASSERT_TRUE(allEnd());
    }
    // The first completion of a round ends its session, and the calls behind it with it.
    EXPECT_GE(good, rounds);
    say("by 300 sessions that go in a completion", began, started);
}

/// What this process takes when this is made.
struct Taken {
    std::size_t descriptors = openDescriptors();
    std::size_t threads = threadNames().size();
    long kibibytes = memoryInKiB("VmRSS");
};

class SoakTest : public LoadTest {
protected:
    static std::chrono::seconds wanted() {
        const char* seconds = std::getenv("KELO_SOAK_SECONDS");
        return std::chrono::seconds(seconds == nullptr ? 6 : std::atoi(seconds));
    }

    /// One of each kind, some of them cancelled.
    void mixed(const std::shared_ptr<Manager>& manager, int round) {
        call(manager, server->url("/quick"));
        call(manager, server->serialUrl("/moved"));
        heard(manager->download(FixedRequest(server->url("/files/loop.mp4")),
                                URL::fileURL(folder.path("loop" + std::to_string(round % 8)))));
        FixedRequest put(server->serialUrl("/files/put" + std::to_string(round % 8)));
        put.request.method = Method::PUT;
        heard(manager->upload(put, Data(std::string(20'000, 'u'))));
        call(manager, server->url("/slow"))->cancel();
    }

    TemporaryFolder folder;
};

TEST_F(SoakTest, TakesNoMoreAtItsEndThanEarlyOn) {
    const auto began = Clock::now();
    const auto manager = makeManager();
    std::optional<Taken> early;
    int round = 0;
    while (Clock::now() < began + wanted()) {
        for (int i = 0; i < 8; ++i) {
            mixed(manager, round++);
        }
        ASSERT_TRUE(allEnd());
        if (!early && Clock::now() >= began + wanted() / 3) {
            early.emplace();
        }
    }
    const Taken late;
    ASSERT_TRUE(early);
    const std::string more = std::to_string(late.kibibytes - early->kibibytes) +
                             " KiB more at the end than after a third";
    say("mixed: calls, redirects, files both ways, some cancelled; " + more, began, started);
    std::cout << "soak: " << started << " exchanges in " << wanted().count() << " s; " << more
              << '\n';
    EXPECT_GE(good, round * 4);
    EXPECT_LE(late.threads, early->threads);
    // Six connections to each of two hosts for calls and to one for downloads come and go, and both
    // ends of each are here.
    constexpr std::size_t maxConnections = 3 * 6;
    EXPECT_LE(late.descriptors, early->descriptors + 2 * maxConnections);
    if (!isSanitized) {
        EXPECT_LE(late.kibibytes, early->kibibytes + 4096);
    }
}

} // namespace
} // namespace KeloAPI::testing
