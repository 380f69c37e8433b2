#pragma once

#include "TimeLimit.hpp"

#include <KeloAPI/http/Transport.hpp>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

/// Keeps what an exchange tells. Read the fields after `wait`; the hooks run on the exchange's
/// thread, before the call they belong to is counted as over.
class RecordingObserver : public ExchangeObserver {
public:
    std::function<void()> onResponse = [] {};
    std::function<bool()> onData = [] { return true; };
    std::function<void()> onSent = [] {};
    std::function<void()> onComplete = [] {};

    std::vector<HTTPResponse> responses;
    std::string body;
    std::vector<std::pair<std::int64_t, std::int64_t>> sent;
    int completions = 0;
    int callsAfterEnd = 0;
    std::optional<Error> error;
    std::thread::id thread;

    void didReceiveResponse(HTTPResponse response) override {
        countCall();
        responses.push_back(std::move(response));
        onResponse();
    }
    bool didReceiveData(std::string_view bytes) override {
        countCall();
        body += bytes;
        return onData();
    }
    void didSendBody(std::int64_t sentBytes, std::int64_t total) override {
        countCall();
        sent.emplace_back(sentBytes, total);
        onSent();
    }
    void didComplete(std::optional<Error> failure) override {
        countCall();
        thread = std::this_thread::get_id();
        error = std::move(failure);
        onComplete();
        // Told under the lock: the waiting test may destroy this object at once.
        const std::lock_guard lock(_mutex);
        ++completions;
        _over = true;
        _changed.notify_all();
    }

    /// False when the exchange does not complete in time.
    bool wait() {
        std::unique_lock lock(_mutex);
        return _changed.wait_for(lock, timeLimit, [this] { return _over; });
    }
    bool hasCompleted() {
        const std::lock_guard lock(_mutex);
        return _over;
    }
    /// The status of the response; 0 when there was none.
    int status() const { return responses.empty() ? 0 : responses.front().statusCode; }

private:
    void countCall() {
        const std::lock_guard lock(_mutex);
        callsAfterEnd += _over ? 1 : 0;
    }

    std::mutex _mutex;
    std::condition_variable _changed;
    bool _over = false;
};

} // namespace KeloAPI::testing
