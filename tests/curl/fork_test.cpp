#include "support/GetRequest.hpp"
#include "support/MainLoop.hpp"
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
    struct Ended {
        bool inTime = false;
        std::optional<Error> error;

        bool well() const { return inTime && !error; }
        bool inherited() const {
            return inTime && error && isHTTPError(*error, HTTPErrorCode::Inherited);
        }
    };

    Ended ask(Manager& through) const {
        return ended(through.request(GetRequest(URL::parse(server.url("/")))));
    }

    static Ended ended(const std::shared_ptr<Request>& request) {
        const auto result = std::make_shared<Ended>();
        request->response([result](const ResponseContent& content, Timeline) {
            return [result, error = content.error] { *result = {true, error}; };
        });
        runUntil([&] { return result->inTime; });
        return *result;
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

    RawServer server{[](RawConnection& connection) {
        while (!connection.readRequest().empty()) {
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
        }
    }};
    std::unique_ptr<Manager> manager = std::make_unique<Manager>(ServerTrustPolicyManager());
};

TEST_F(ForkTest, InAChildTheParentsConnectionsSaySoAndNewOnesWork) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers lose their own threads in a child";
    }
    // Once before the parent has threads, once with them.
    for (int turn = 0; turn < 2; ++turn) {
        const int status = inChild([this] {
            if (!ask(*manager).inherited()) {
                return 1;
            }
            const auto file = URL::fileURL("/nowhere/video");
            if (!ended(manager->download(GetRequest(URL::parse(server.url("/"))), file))
                     .inherited()) {
                return 2;
            }
            Manager own{ServerTrustPolicyManager()};
            if (!ask(own).well()) {
                return 3;
            }
            manager.reset();
            return ask(own).well() ? 0 : 4;
        });
        EXPECT_EQ(status, 0);
        EXPECT_TRUE(ask(*manager).well());
    }
    EXPECT_EQ(server.connections(), 3) << "the parent goes on over its own";
}

TEST_F(ForkTest, AChildWithAManagerOfItsOwnMayExit) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers lose their own threads in a child";
    }
    ASSERT_TRUE(ask(*manager).well());
    EXPECT_EQ(inChildThatExits([this] {
                  auto* own = new Manager{ServerTrustPolicyManager()}; // outlives the exit
                  return ask(*own).well() ? 0 : 1;
              }),
              0);
    EXPECT_TRUE(ask(*manager).well());
}

TEST_F(ForkTest, AChildsExitAsksTheChildsThreadsToPark) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers lose their own threads in a child";
    }
    ASSERT_TRUE(ask(*manager).well());
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
