#include "support/EndedRequest.hpp"
#include "support/FixedRequest.hpp"
#include "support/RawServer.hpp"
#include "support/Sanitizers.hpp"
#include "TransportTest.hpp"

#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <semaphore>
#include <thread>

namespace KeloAPI::testing {
namespace {

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
            _exit(work());
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
