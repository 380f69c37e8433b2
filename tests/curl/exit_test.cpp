#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/LeaveProcess.hpp"
#include "support/Process.hpp"
#include "support/Sanitizers.hpp"
#include "TrustTest.hpp"

#include <KeloAPI/http/internal/AbandonedDownloads.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <semaphore>
#include <thread>

namespace KeloAPI::testing {
namespace {

class ExitTest : public TrustTest {
protected:
    ExitTest() {
        server = std::make_unique<RawServer>(leaf.serverContext(), [](RawConnection& connection) {
            const std::map<std::string, std::string> bodies = {
                {"/quick", std::string(50'000, 'q')}, {"/slow", "slow"}, {"/records", records()}};
            connection.serve([&](const std::string& request) {
                const std::string path = pathOf(request);
                std::this_thread::sleep_for(std::chrono::milliseconds(path == "/slow" ? 100 : 0));
                return okResponse(bodies.at(path));
            });
        });
        trustBySystem(leaf);
    }

    static std::string records() {
        std::string json = "[0";
        for (int i = 1; i < 20'000; ++i) {
            json += R"(,{"a":[1.5,"two",null]})";
        }
        return json + "]";
    }

    /// Leaves the program `all` times, four at once, in all ways and lives.
    void runAll(const std::string& work, int all, const std::vector<std::string>& ways,
                const std::vector<std::string>& lives, int longestMicroseconds) const {
        std::atomic<int> next = 0;
        std::vector<std::thread> runners;
        runners.reserve(4);
        for (int i = 0; i < 4; ++i) {
            runners.emplace_back([&] {
                for (int run = next++; run < all; run = next++) {
                    const auto n = static_cast<std::size_t>(run);
                    const std::string& way = ways[n % ways.size()];
                    const std::string& life = lives[n / ways.size() % lives.size()];
                    const std::string delay = std::to_string(run * 37 % longestMicroseconds);
                    const std::string port = std::to_string(server->port());
                    Process program({"/usr/bin/env", "--chdir=" + files.path(), KELO_EXIT_IN_FLIGHT,
                                     work, way, life, port, certificate, delay});
                    EXPECT_EQ(program.wait(), 7) << way << ' ' << life << ' ' << delay << " us";
                }
            });
        }
        for (std::thread& runner : runners) {
            runner.join();
        }
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TemporaryFolder folder;
    std::string certificate = folder.write("certificate.pem", leaf.pem());
    TemporaryFolder files; // the program's working directory
};

TEST_F(ExitTest, AThousandTimesWithRequestsInFlight) {
    constexpr int all = isSanitized ? 120 : 1000;
    // From the first steps of TLS to the midst of traffic.
    runAll("requests", all, {"main", "return", "thread", "response", "data", "complete"},
           {"early", "late", "never"}, 25'000);
    EXPECT_GT(server->requests(), all / 4) << "the requests did not even reach the server";
}

TEST_F(ExitTest, WhileResponsesAreBeingParsed) {
    constexpr int all = isSanitized ? 30 : 200;
    runAll("parsing", all, {"main", "return", "queue"}, {"early", "never"}, 5'000);
}

TEST_F(ExitTest, WhileFilesAreBeingDownloaded) {
    constexpr int all = isSanitized ? 30 : 100;
    runAll("downloading", all, {"main", "return", "thread", "queue"}, {"early", "never"}, 15'000);
    int whole = 0;
    for (const std::string& name : files.names()) {
        if (!AbandonedDownloads::isTemporaryName(name)) {
            EXPECT_EQ(files.read(name), std::string(50'000, 'q')) << name;
            ++whole;
        }
    }
    EXPECT_GT(whole, 0) << "no download came to its end";
}

TEST_F(ExitTest, WhileCallsWaitForAServerOrBeforeARetry) {
    constexpr int all = isSanitized ? 30 : 100;
    runAll("waiting", all, {"main", "return", "thread"}, {"early", "never"}, 10'000);
}

TEST_F(ExitTest, WhileConnectionsRest) {
    constexpr int all = isSanitized ? 30 : 100;
    runAll("resting", all, {"main", "return", "thread"}, {"early", "never"}, 5'000);
    EXPECT_GE(server->requests(), all) << "the calls did not come to their ends";
}

class ForkTest : public TransportTest {
protected:
    void SetUp() override {
        if (isSanitized) {
            GTEST_SKIP() << "sanitizers lose their own threads in a child";
        }
    }

    bool isAnswered(Manager& through) const {
        return !errorOf(through.request(FixedRequest(server.url("/"))));
    }
    static bool isInherited(const std::shared_ptr<Request>& request) {
        const auto error = errorOf(request);
        return error && isHTTPError(*error, HTTPErrorCode::Inherited);
    }

    /// The exit status of a forked child that does this; it gives up by itself.
    static int inChild(const std::function<int()>& work) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(60);
            leaveProcess(work());
        }
        int status = -1;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    /// The same of a child that ends as a program does.
    static int inChildThatExits(const std::function<int()>& work) {
        static_cast<void>(std::fflush(nullptr)); // or the child would write what waits, too
        return inChild([&]() -> int { std::exit(work()); });
    }

    RawServer server{answeringAll(okResponse())};
    std::unique_ptr<Manager> manager = std::make_unique<Manager>(ServerTrustPolicyManager());
};

TEST_F(ForkTest, InAChildTheParentsConnectionsSaySoAndNewOnesWork) {
    // Once before the parent has threads, once with them.
    for (int turn = 0; turn < 2; ++turn) {
        const int status = inChild([this] {
            const FixedRequest request(server.url("/"));
            if (!isInherited(manager->request(request))) {
                return 1;
            }
            if (!isInherited(manager->download(request, URL::fileURL("/nowhere/video")))) {
                return 2;
            }
            Manager own{ServerTrustPolicyManager()};
            if (!isAnswered(own)) {
                return 3;
            }
            manager.reset();
            return isAnswered(own) ? 0 : 4;
        });
        EXPECT_EQ(status, 0);
        EXPECT_TRUE(isAnswered(*manager));
    }
    EXPECT_EQ(server.connections(), 3) << "the parent goes on over its own";
}

TEST_F(ForkTest, AChildWithAManagerOfItsOwnMayExit) {
    ASSERT_TRUE(isAnswered(*manager));
    EXPECT_EQ(inChildThatExits([this] {
                  auto* own = new Manager{ServerTrustPolicyManager()}; // outlives the exit
                  return isAnswered(*own) ? 0 : 1;
              }),
              0);
    EXPECT_TRUE(isAnswered(*manager));
}

TEST_F(ForkTest, AChildWithoutThreadsOfItsOwnMayExit) {
    ASSERT_TRUE(isAnswered(*manager));
    EXPECT_EQ(inChildThatExits([] { return 0; }), 0);
    EXPECT_TRUE(isAnswered(*manager));
}

TEST_F(ForkTest, AChildsExitAsksTheChildsThreadsToPark) {
    ASSERT_TRUE(isAnswered(*manager));
    constexpr int asked = 7;
    EXPECT_EQ(inChildThatExits([] {
                  ExitGuard::install();
                  static std::binary_semaphore ready{0};
                  std::thread([] {
                      const ExitGuard::Member member([] { _exit(asked); });
                      ready.release();
                      while (true) {
                          pause();
                      }
                  }).detach();
                  ready.acquire();
                  return 0;
              }),
              asked);
}

} // namespace
} // namespace KeloAPI::testing
