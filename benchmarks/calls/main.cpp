// Calls of a host, one after another and many in flight at a time, over HTTP/1.1 and HTTP/2, from
// the endpoint to the model, against a bare loop over libcurl that parses each response.
#include "benchmarks/calls/CurlClient.hpp"
#include "benchmarks/support/MediaServer.hpp"
#include "benchmarks/support/RatioReporter.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <chrono>
#include <memory>

namespace KeloBenchmark {

namespace {

using namespace KeloAPI;

constexpr int calls = 5'000;

class UserServer : public MediaServer {
public:
    UserServer() {
        addContent("me", R"({"data": {"userId": 7, "username": "mara", "verified": 1,
            "avatarUrl": "https://service.example/media/avatars/7.png", "description": "loops",
            "location": "Helsinki", "followerCount": 120, "followingCount": 80, "postCount": 14,
            "likeCount": 300, "loopCount": 123456, "loopVelocity": 0.25, "private": 0}})");
    }
};

const MediaServer& server() {
    static const UserServer instance; // ends with the program
    return instance;
}

std::string address(bool multiplexed) {
    return multiplexed ? server().url("me") : server().serialUrl("me");
}

/// Keeps so many calls in flight; each that ends starts the next.
class Calls {
public:
    Calls(std::shared_ptr<Session> session, std::string url)
        : _session(std::move(session))
        , _url(std::move(url)) {}

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
        const auto endpoint = Endpoint::create(_session);
        endpoint->setPath(_url);
        endpoint->request(std::make_shared<UserParser>(),
                          [this](const auto& users, const std::optional<Metadata>&, const Timeline&,
                                 const std::optional<Error>&) {
                              ++_ended;
                              _good += users.size() == 1 && users.front()->username == "mara";
                              if (_started < calls) {
                                  start();
                              }
                          });
    }

    const std::shared_ptr<Session> _session;
    const std::string _url;
    int _started = 0;
    int _ended = 0;
    int _good = 0;
};

void library(benchmark::State& state, bool multiplexed) {
    const std::string url = address(multiplexed);
    Diagnostics::setSink([](std::string_view) {});
    for (auto _ : state) {
        // Fresh connections for each row, as the loop has.
        const auto session = std::make_shared<Session>(SessionType::UnAuthenticated);
        session->setSessionManager(std::make_shared<Manager>(server().trust()));
        if (!Calls(session, url).run(static_cast<int>(state.range(0)))) {
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
    benchmark::RegisterBenchmark(("calls/" + name).c_str(), client, multiplexed)
        ->Arg(1)
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
    const std::string subject = "calls/" + protocol;
    return {"calls-" + protocol + "-" + count + "/curl", subject + "/" + count + "/real_time",
            subject + "ByCurl/" + count + "/real_time", bound, Clock::Wall};
}

} // namespace

} // namespace KeloBenchmark

int main(int argc, char** argv) {
    using KeloBenchmark::inFlight;
    KeloBenchmark::addAll();
    return KeloBenchmark::runWithRatios(
        argc, argv,
        {inFlight("http1", "1", std::nullopt), inFlight("http1", "64", 0.80),
         inFlight("http1", "256", 0.80), inFlight("http2", "1", std::nullopt),
         inFlight("http2", "64", 0.80), inFlight("http2", "256", 0.80)});
}
