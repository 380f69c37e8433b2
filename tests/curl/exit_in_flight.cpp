// Leaves the process by `exit` in the midst of work. Run by exit_test.
//
//   exit-in-flight WORK WAY LIFE PORT CERTIFICATE MICROSECONDS
//
// WORK is requests, in flight on two network threads; parsing, on the response queues of several
// managers; downloading, into the working directory; waiting, for a server that does not answer and
// in the pause before a retry; or resting, with a connection that is kept. WAY says who calls
// `exit`, and from where: main, return, thread, response, data or complete, or queue, which is a
// response queue between two responses. LIFE says when the transport or the managers are destroyed:
// early, which is before the library's threads are asked to park, late, which is after that, or
// never. MICROSECONDS are counted from the first request, or from the first response that finds the
// program set up. The exit status is 7.

#include "support/FixedRequest.hpp"
#include "support/Loopback.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/curl/internal/CurlTransport.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace KeloAPI;
using Clock = std::chrono::steady_clock;

constexpr int expectedStatus = 7;

/// Looked at by threads to the very end.
struct Plan {
    std::string way;
    std::string life;
    std::string port;
    std::chrono::microseconds after{0};
    std::atomic<Clock::rep> when = std::numeric_limits<Clock::rep>::max();
    /// The main thread is done with the managers: what it would do to them while another thread
    /// leaves the process is not what is tested here.
    std::atomic<bool> ready = false;
    /// Several threads may get there; only one may call `exit`.
    std::atomic<bool> left = false;

    void startClock() {
        Clock::rep never = std::numeric_limits<Clock::rep>::max();
        when.compare_exchange_strong(never, (Clock::now() + after).time_since_epoch().count());
    }
    bool isDue() const { return Clock::now().time_since_epoch().count() >= when; }
    void awaitTime() const {
        while (!isDue()) {
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    }
    void exitIf(std::string_view here) {
        if (way == here && isDue() && !left.exchange(true)) {
            std::exit(expectedStatus);
        }
    }
};

/// Asks again as soon as it has been answered.
class Asker : public ExchangeObserver, public std::enable_shared_from_this<Asker> {
public:
    Asker(Plan& plan, CurlTransport& transport, const std::string& url)
        : _plan(plan)
        , _transport(transport)
        , _url(url) {}

    void ask() { _transport.start(testing::FixedRequest(_url).request, shared_from_this()); }

    void didReceiveResponse(HTTPResponse) override { _plan.exitIf("response"); }
    bool didReceiveData(std::string_view) override {
        _plan.exitIf("data");
        return true;
    }
    void didSendBody(std::int64_t, std::int64_t) override {}
    void didComplete(std::optional<Error> error) override {
        _plan.exitIf("complete");
        if (!error) {
            ask();
        }
    }

private:
    Plan& _plan;
    CurlTransport& _transport;
    std::string _url;
};

/// Two lanes: one pinned, one of the system's trust, which the caller sets up.
void startAsking(Plan& plan, CurlTransport& transport) {
    plan.startClock();
    for (const char* host : {"localhost", "127.0.0.1"}) {
        for (const char* path : {"/quick", "/quick", "/slow"}) {
            const std::string url = std::string("https://") + host + ":" + plan.port + path;
            std::make_shared<Asker>(plan, transport, url)->ask();
        }
    }
}

void parse(const ResponseContent& content, Plan& plan) {
    if (plan.ready) {
        plan.startClock();
    }
    // The exit may have cancelled it.
    if (!serializeJSON(content) && !content.error) {
        _exit(4);
    }
    plan.exitIf("queue");
}

/// Parses an answer many times over, as a queue full of answers would.
void startParsing(Plan& plan, Manager& manager) {
    const auto request =
        manager.request(testing::FixedRequest("https://localhost:" + plan.port + "/records"));
    for (int i = 0; i < 1'000; ++i) {
        request->response([&plan](const ResponseContent& content, Timeline) {
            parse(content, plan);
            return Request::Completion();
        });
    }
}

/// Far more files than are complete when the process ends.
void startDownloading(Plan& plan, Manager& manager) {
    const std::string folder = std::filesystem::current_path();
    for (int i = 0; i < 100; ++i) {
        manager
            .download(testing::FixedRequest("https://localhost:" + plan.port + "/quick"),
                      URL::fileURL(folder + "/file" + std::to_string(i % 5)))
            ->response([&plan](const ResponseContent&, Timeline) {
                if (plan.ready) {
                    plan.startClock();
                }
                plan.exitIf("queue");
                return Request::Completion();
            });
    }
}

void startWaiting(Plan& plan, Manager& manager) {
    static const testing::LoopbackListener silent;
    plan.startClock();
    for (const int port : {silent.port, 1}) { // nobody listens on the other
        const std::string url = "https://localhost:" + std::to_string(port) + "/";
        static_cast<void>(manager.request(testing::FixedRequest(url)));
    }
}

void startResting(Plan& plan, Manager& manager) {
    const std::string url = "https://localhost:" + plan.port + "/quick";
    manager.request(testing::FixedRequest(url))
        ->response([&plan](const ResponseContent&, Timeline) {
            plan.startClock();
            return Request::Completion();
        });
}

void startManagers(Plan& plan, std::string_view work, const ServerTrustPolicyManager& trust) {
    static auto& kept = *new std::vector<std::shared_ptr<Manager>>;
    TransportSettings settings;
    settings.retries = {.maxRetries = 3, .firstPause = std::chrono::minutes(1)};
    for (int i = 0; i < 3; ++i) {
        kept.push_back(std::make_shared<Manager>(trust, settings));
        if (work == "parsing") {
            startParsing(plan, *kept.back());
        } else if (work == "downloading") {
            startDownloading(plan, *kept.back());
        } else if (work == "waiting") {
            startWaiting(plan, *kept.back());
        } else {
            startResting(plan, *kept.back());
        }
    }
    if (plan.life == "early") {
        // Younger than the library's exit handler, which came with the first manager.
        static std::vector<std::shared_ptr<Manager>> destroyedAtExit;
        destroyedAtExit = std::move(kept);
    }
    plan.ready = true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 7) {
        return 2;
    }
    static Plan& plan = *new Plan;
    const std::string_view work = argv[1];
    plan.way = argv[2];
    plan.life = argv[3];
    plan.port = argv[4];
    plan.after = std::chrono::microseconds(std::strtol(argv[6], nullptr, 10));
    CurlTransport* transport = nullptr;
    // What exit undoes goes in reverse: this one is older than the library's own exit handler.
    if (plan.life == "late") {
        static CurlTransport late{ServerTrustPolicyManager()};
        transport = &late;
    }
    const auto certificate = Certificate::fromPEM(testing::contentsOf(argv[5]));
    if (!certificate) {
        return 3;
    }
    const ServerTrustPolicyManager trust({{"localhost", PinCertificates{{*certificate}}}});
    if (work != "requests") {
        startManagers(plan, work, trust);
    } else {
        if (plan.life == "early") {
            static CurlTransport early(trust);
            transport = &early;
        }
        startAsking(plan, transport != nullptr ? *transport : *new CurlTransport(trust));
    }
    if (plan.way == "thread") {
        std::thread([] {
            plan.awaitTime();
            plan.exitIf("thread");
        }).detach();
    } else if (plan.way == "main" || plan.way == "return") {
        plan.awaitTime();
        plan.exitIf("main");
        return expectedStatus;
    }
    while (true) {
        pause();
    }
}
