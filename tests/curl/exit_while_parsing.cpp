// Leaves the process by `exit` while answers are being parsed on the response queues of several
// managers. Run by exit_test.
//
//   exit-while-parsing WAY LIFE PORT CERTIFICATE MICROSECONDS
//
// WAY says who calls `exit`, and from where: main, return, or queue, which is a response queue
// between two parses. LIFE says whether the managers are destroyed by the exit (early) or not at
// all (never). MICROSECONDS are counted from the first parse that finds the program set up. The
// exit status is 7.

#include "support/GetRequest.hpp"

#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace KeloAPI;
using Clock = std::chrono::steady_clock;

constexpr int expectedStatus = 7;
constexpr int managers = 3;
constexpr int parsesOfAnAnswer = 1'000;

/// Looked at by threads to the very end.
struct Plan {
    std::string way;
    std::chrono::microseconds after{0};
    /// The main thread is done with the managers: what it would do to them while another thread
    /// leaves the process is not what is tested here.
    std::atomic<bool> ready = false;
    std::atomic<Clock::rep> firstParse = 0;
    /// Only one thread may call `exit`.
    std::atomic<bool> left = false;
    std::vector<std::shared_ptr<Manager>> kept;

    bool due() const {
        const Clock::rep first = firstParse;
        return first != 0 && Clock::now().time_since_epoch().count() >= first + ticks();
    }
    Clock::rep ticks() const { return std::chrono::duration_cast<Clock::duration>(after).count(); }
};

void parse(const ResponseContent& content, Plan& plan) {
    if (Clock::rep none = 0; plan.ready) {
        plan.firstParse.compare_exchange_strong(none, Clock::now().time_since_epoch().count());
    }
    // The exit may have cancelled it.
    if (!serializeJSON(content) && !content.error) {
        _exit(4);
    }
    if (plan.way == "queue" && plan.due() && !plan.left.exchange(true)) {
        std::exit(expectedStatus);
    }
}

/// Parses one answer many times over, as a queue full of answers would.
void ask(Manager& manager, const URL& url, Plan& plan) {
    const auto request = manager.request(testing::GetRequest(url));
    for (int i = 0; i < parsesOfAnAnswer; ++i) {
        request->response([&plan](const ResponseContent& content, Timeline) {
            parse(content, plan);
            return Request::Completion();
        });
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        return 2;
    }
    static Plan& plan = *new Plan;
    plan.way = argv[1];
    const bool early = std::string_view(argv[2]) == "early";
    plan.after = std::chrono::microseconds(std::strtol(argv[5], nullptr, 10));
    const auto certificate = Certificate::fromPEM(testing::contentsOf(argv[4]));
    const auto url = URL::parse(std::string("https://localhost:") + argv[3] + "/records");
    if (!certificate || !url) {
        return 3;
    }
    const ServerTrustPolicyManager trust({{"localhost", PinCertificates{{*certificate}}}});
    std::vector<std::shared_ptr<Manager>> made;
    for (int i = 0; i < managers; ++i) {
        made.push_back(std::make_shared<Manager>(trust));
        ask(*made.back(), *url, plan);
    }
    if (early) {
        static std::vector<std::shared_ptr<Manager>> destroyedAtExit;
        destroyedAtExit = std::move(made);
    } else {
        plan.kept = std::move(made);
    }
    plan.ready = true;
    if (plan.way == "queue") {
        while (true) {
            pause();
        }
    }
    while (!plan.due()) {
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
    if (plan.way == "main") {
        std::exit(expectedStatus);
    }
    return expectedStatus;
}
