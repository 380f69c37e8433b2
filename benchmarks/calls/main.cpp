// Calls of a host, one after another and many in flight at a time, over HTTP/1.1 and HTTP/2, from
// the endpoint to the model, against a bare loop over libcurl that parses each response.
#include "benchmarks/support/MediaServer.hpp"
#include "benchmarks/support/RatioReporter.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <curl/curl.h>
#include <simdjson.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

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

class CurlCall {
public:
    CurlCall(const std::string& url, const std::string& certificatePath)
        : _easy(curl_easy_init(), &curl_easy_cleanup) {
        curl_easy_setopt(_easy.get(), CURLOPT_URL, url.c_str());
        curl_easy_setopt(_easy.get(), CURLOPT_CAINFO, certificatePath.c_str());
        curl_easy_setopt(_easy.get(), CURLOPT_FAILONERROR, 1L);
        curl_easy_setopt(_easy.get(), CURLOPT_PIPEWAIT, 1L);
        curl_easy_setopt(_easy.get(), CURLOPT_WRITEFUNCTION, &CurlCall::onBody);
        curl_easy_setopt(_easy.get(), CURLOPT_WRITEDATA, this);
        curl_easy_setopt(_easy.get(), CURLOPT_PRIVATE, this);
    }
    CurlCall(const CurlCall&) = delete;
    CurlCall& operator=(const CurlCall&) = delete;
    ~CurlCall() = default;

    static CurlCall& of(CURL* easy) {
        char* self = nullptr;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &self);
        return *reinterpret_cast<CurlCall*>(self);
    }

    CURL* easy() const { return _easy.get(); }

    /// Parses the body and makes room for the next.
    bool takeBody(simdjson::dom::parser& parser) {
        const bool parses = parser.parse(_body).error() == simdjson::SUCCESS;
        _body.clear();
        return parses;
    }

private:
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
        static_cast<CurlCall*>(self)->_body.append(bytes, size * count);
        return size * count;
    }

    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> _easy;
    std::string _body;
};

/// A bare loop over libcurl: `calls` requests, `inFlight` of them at a time, each body parsed. At
/// most six connections, as many as the library has. False when one of them fails.
bool callInALoop(const std::string& url, const std::string& certificatePath, std::size_t inFlight) {
    const std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi(curl_multi_init(),
                                                                      &curl_multi_cleanup);
    curl_multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS, 6L);
    std::vector<std::unique_ptr<CurlCall>> handles;
    for (std::size_t i = 0; i < inFlight; ++i) {
        handles.push_back(std::make_unique<CurlCall>(url, certificatePath));
        curl_multi_add_handle(multi.get(), handles.back()->easy());
    }
    simdjson::dom::parser parser;
    int left = calls - static_cast<int>(inFlight);
    int running = 0;
    bool good = true;
    do {
        curl_multi_perform(multi.get(), &running);
        int queued = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi.get(), &queued)) {
            CURL* easy = message->easy_handle;
            good = message->data.result == CURLE_OK && CurlCall::of(easy).takeBody(parser) && good;
            curl_multi_remove_handle(multi.get(), easy);
            if (left-- > 0) {
                curl_multi_add_handle(multi.get(), easy);
                running = 1;
            }
        }
        if (running > 0) {
            curl_multi_poll(multi.get(), nullptr, 0, 1000, nullptr);
        }
    } while (running > 0);
    for (const auto& handle : handles) {
        curl_multi_remove_handle(multi.get(), handle->easy());
    }
    return good;
}

void loop(benchmark::State& state, bool multiplexed) {
    const std::string url = address(multiplexed);
    for (auto _ : state) {
        if (!callInALoop(url, server().certificatePath(),
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
