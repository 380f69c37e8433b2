// Leaves the process by `exit` while requests are in flight. Run by exit_test.
//
//   exit-in-flight WAY LIFE PORT CERTIFICATE MICROSECONDS
//
// WAY says who calls `exit`, and from where: main, return, thread, response, data or complete. LIFE
// says when the transport is destroyed: early, which is before the network threads are asked to
// park, late, which is after that, or never. The exit status is 7.

#include "support/GetRequest.hpp"

#include <KeloAPI/curl/internal/CurlTransport.hpp>

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

using namespace KeloAPI;

constexpr int expectedStatus = 7;

struct Plan {
    std::string way;
    std::string port;
    std::chrono::steady_clock::time_point when;
    CurlTransport* transport = nullptr;
    /// Two network threads may get there; only one thread may call `exit`.
    std::atomic<bool> left = false;

    void exitIf(std::string_view here) {
        if (way == here && std::chrono::steady_clock::now() >= when && !left.exchange(true)) {
            std::exit(expectedStatus);
        }
    }
};

/// Asks again as soon as it has been answered.
class Asker : public ExchangeObserver, public std::enable_shared_from_this<Asker> {
public:
    Asker(Plan& plan, const std::string& url)
        : _plan(plan)
        , _url(url) {}

    void ask() {
        URLRequest request;
        request.url = URL::parse(_url);
        _plan.transport->start(request, shared_from_this());
    }

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
    std::string _url;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        return 2;
    }
    // Observers may look at it to the very end.
    static Plan& plan = *new Plan;
    const std::string_view life = argv[2];
    // What exit undoes goes in reverse: this one is older than the library's own exit handler.
    if (life == "late") {
        static CurlTransport transport{ServerTrustPolicyManager()};
        plan.transport = &transport;
    }
    const auto certificate = Certificate::fromPEM(testing::contentsOf(argv[4]));
    if (!certificate) {
        return 3;
    }
    const ServerTrustPolicyManager trust({{"localhost", PinCertificates{{*certificate}}}});
    if (life == "early") {
        static CurlTransport transport(trust);
        plan.transport = &transport;
    } else if (life == "never") {
        plan.transport = new CurlTransport(trust);
    }
    plan.way = argv[1];
    plan.port = argv[3];
    plan.when = std::chrono::steady_clock::now() +
                std::chrono::microseconds(std::strtol(argv[5], nullptr, 10));

    // Two lanes: one pinned, one of the system's trust, which the caller sets up.
    for (const char* host : {"localhost", "127.0.0.1"}) {
        for (const char* path : {"/quick", "/quick", "/slow"}) {
            const std::string url = std::string("https://") + host + ":" + plan.port + path;
            std::make_shared<Asker>(plan, url)->ask();
        }
    }
    if (plan.way == "thread") {
        std::thread([] {
            std::this_thread::sleep_until(plan.when);
            plan.exitIf("thread");
        }).detach();
    } else if (plan.way == "main" || plan.way == "return") {
        std::this_thread::sleep_until(plan.when);
        plan.exitIf("main");
        return expectedStatus;
    }
    while (true) {
        pause();
    }
}
