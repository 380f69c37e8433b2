#include "support/Process.hpp"
#include "support/Sanitizers.hpp"
#include "TrustTest.hpp"

#include <atomic>

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
                    Process program(
                        {KELO_EXIT_IN_FLIGHT, work, way, life, port, certificate, delay});
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

} // namespace
} // namespace KeloAPI::testing
