// Calls of a host that has many in flight at a time, over HTTP/1.1 and HTTP/2, each response
// parsed, against a bare loop over libcurl that does the same.
#include "benchmarks/inflight/CurlClient.hpp"
#include "benchmarks/support/MediaServer.hpp"
#include "benchmarks/support/RatioReporter.hpp"
#include "benchmarks/support/TimelineResponse.hpp"

#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/http/ResponseSerializers.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <chrono>
#include <memory>

namespace KeloBenchmark {

namespace {

using namespace KeloAPI;

constexpr int calls = 5'000;

class TimelineServer : public MediaServer {
public:
    TimelineServer() { addContent("timeline", timelineResponse(1)); }
};

const MediaServer& server() {
    static const TimelineServer instance; // ends with the program
    return instance;
}

std::string address(bool multiplexed) {
    return multiplexed ? server().url("timeline") : server().serialUrl("timeline");
}

class Address final : public URLRequestConvertible {
public:
    explicit Address(const std::string& url) { _request.url = URL::parse(url); }
    KeloAPI::URLRequest URLRequest() const override { return _request; }

private:
    KeloAPI::URLRequest _request;
};

/// Keeps so many calls in flight; each that ends starts the next.
class Calls {
public:
    Calls(Manager& manager, const Address& address)
        : _manager(manager)
        , _address(address) {}

    bool run(int inFlight) {
        for (int i = 0; i < inFlight; ++i) {
            start();
        }
        return MainQueue::main().runUntil([this] { return _ended == calls; },
                                          std::chrono::minutes(2)) &&
               _good == calls;
    }

private:
    void start() {
        ++_started;
        _manager.request(_address)->response<JsonDocument>(
            &serializeJSON, [this](const Result<JsonDocument>& document, Timeline) {
                ++_ended;
                _good += document ? 1 : 0;
                if (_started < calls) {
                    start();
                }
            });
    }

    Manager& _manager;
    const Address& _address;
    int _started = 0;
    int _ended = 0;
    int _good = 0;
};

void library(benchmark::State& state, bool multiplexed) {
    const Address request(address(multiplexed));
    for (auto _ : state) {
        // Fresh connections for each row, as the loop has.
        Manager manager(server().trust());
        if (!Calls(manager, request).run(static_cast<int>(state.range(0)))) {
            state.SkipWithError("a call failed");
            break;
        }
    }
    state.SetItemsProcessed(calls * state.iterations());
}

void loop(benchmark::State& state, bool multiplexed) {
    const std::string url = address(multiplexed);
    for (auto _ : state) {
        if (!callInALoop(url, server().certificatePath(), calls,
                         static_cast<std::size_t>(state.range(0)))) {
            state.SkipWithError("a call failed");
            break;
        }
    }
    state.SetItemsProcessed(calls * state.iterations());
}

using Client = void(benchmark::State& state, bool multiplexed);

void add(const std::string& name, Client* client, bool multiplexed) {
    benchmark::RegisterBenchmark(("inflight/" + name).c_str(), client, multiplexed)
        ->Arg(64)
        ->Arg(256)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

void addAll() {
    add("http1", library, false);
    add("http1ByCurl", loop, false);
    add("http2", library, true);
    add("http2ByCurl", loop, true);
}

Ratio inFlight(const std::string& protocol, const std::string& count, std::optional<double> bound) {
    const std::string subject = "inflight/" + protocol;
    return {"inflight-" + protocol + "-" + count + "/curl", subject + "/" + count + "/real_time",
            subject + "ByCurl/" + count + "/real_time", bound, Clock::Wall};
}

} // namespace

} // namespace KeloBenchmark

int main(int argc, char** argv) {
    using KeloBenchmark::inFlight;
    KeloBenchmark::addAll();
    return KeloBenchmark::runWithRatios(
        argc, argv,
        {inFlight("http1", "64", 0.60), inFlight("http1", "256", 0.60),
         inFlight("http2", "64", std::nullopt), inFlight("http2", "256", std::nullopt)});
}
