#include "support/Sanitizers.hpp"
#include "support/TemporaryFile.hpp"
#include "support/TestServer.hpp"

#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>

namespace KeloAPI::testing {
namespace {

constexpr int expectedStatus = 7;
constexpr int patienceMilliseconds = 10'000;

class ExitTest : public ::testing::Test {
protected:
    ExitTest() {
        server.routes().Get("/quick", [](const httplib::Request&, httplib::Response& response) {
            response.set_content(std::string(50'000, 'q'), "text/plain");
        });
        server.routes().Get("/slow", [](const httplib::Request&, httplib::Response& response) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            response.set_content("slow", "text/plain");
        });
        server.routes().Get("/records", [](const httplib::Request&, httplib::Response& response) {
            response.set_content(records(), "application/json");
        });
        server.start();
        askFirst();
        setenv("SSL_CERT_FILE", certificate.path().c_str(), 1);
    }

    void TearDown() override { unsetenv("SSL_CERT_FILE"); }

    /// The server's library makes some of what its threads share at the first request, guarded in a
    /// way that ThreadSanitizer does not see in a library built without it: the first one is alone.
    void askFirst() {
        httplib::SSLClient client("127.0.0.1", server.port());
        client.enable_server_certificate_verification(false);
        EXPECT_TRUE(client.Get("/quick"));
    }

    static std::string records() {
        std::string json = "[0";
        for (int i = 1; i < 20'000; ++i) {
            json += R"(,{"a":[1.5,"two",null]})";
        }
        return json + "]";
    }

    /// Runs the program `all` times, four at once, through all ways and lives.
    void runAll(const char* program, int all, const std::vector<std::string>& ways,
                const std::vector<std::string>& lives, int longestMicroseconds) const {
        std::atomic<int> next = 0;
        std::mutex mutex;
        std::vector<std::string> wrong;
        std::vector<std::thread> runners;
        runners.reserve(4);
        for (int i = 0; i < 4; ++i) {
            runners.emplace_back([&] {
                for (int run = next++; run < all; run = next++) {
                    const auto n = static_cast<std::size_t>(run);
                    std::string fault = runOnce(program, ways[n % ways.size()],
                                                lives[n / ways.size() % lives.size()],
                                                run * 37 % longestMicroseconds);
                    if (!fault.empty()) {
                        const std::lock_guard lock(mutex);
                        wrong.push_back(std::move(fault));
                    }
                }
            });
        }
        for (std::thread& runner : runners) {
            runner.join();
        }
        EXPECT_TRUE(wrong.empty())
            << wrong.size() << " of " << all << ", the first: " << wrong.front();
    }

    /// Runs the program once and says what was wrong; empty when it left as it should.
    std::string runOnce(const char* program, const std::string& way, const std::string& life,
                        int microseconds) const {
        const std::string port = std::to_string(server.port());
        const std::string delay = std::to_string(microseconds);
        std::array<const char*, 7> arguments = {
            program,       way.c_str(), life.c_str(), port.c_str(), certificate.path().c_str(),
            delay.c_str(), nullptr};
        pid_t process = -1;
        if (posix_spawn(&process, program, nullptr, nullptr,
                        const_cast<char* const*>(arguments.data()), environ) != 0) {
            return "could not be started";
        }
        pollfd ended{static_cast<int>(::syscall(SYS_pidfd_open, process, 0)), POLLIN, 0};
        const bool hung = ::poll(&ended, 1, patienceMilliseconds) != 1;
        ::close(ended.fd);
        if (hung) {
            ::kill(process, SIGKILL);
        }
        int status = 0;
        ::waitpid(process, &status, 0);
        if (hung) {
            return way + " " + life + " after " + delay + " us: hung";
        }
        if (WIFSIGNALED(status)) {
            return way + " " + life + " after " + delay + " us: signal " +
                   std::to_string(WTERMSIG(status));
        }
        if (WEXITSTATUS(status) != expectedStatus) {
            return way + " " + life + " after " + delay + " us: status " +
                   std::to_string(WEXITSTATUS(status));
        }
        return {};
    }

    TestCertificate leaf = TestCertificate::selfSigned({});
    TestServer server{leaf, 64};
    TemporaryFile certificate{leaf.pem()};
};

TEST_F(ExitTest, AThousandTimesWithRequestsInFlight) {
    constexpr int all = isSanitized ? 120 : 1000;
    // From the first steps of TLS to the midst of traffic.
    runAll(KELO_EXIT_IN_FLIGHT, all, {"main", "return", "thread", "response", "data", "complete"},
           {"early", "late", "never"}, 25'000);
    EXPECT_GT(server.requests(), all / 4) << "the requests did not even reach the server";
}

TEST_F(ExitTest, WhileAnswersAreBeingParsed) {
    constexpr int all = isSanitized ? 30 : 200;
    runAll(KELO_EXIT_WHILE_PARSING, all, {"main", "return", "queue"}, {"early", "never"}, 5'000);
}

} // namespace
} // namespace KeloAPI::testing
