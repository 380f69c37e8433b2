#pragma once

#include "TimeLimit.hpp"

#include <KeloAPI/http/Transport.hpp>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

/// Keeps what an exchange tells. Read the fields after `wait`; the hooks run on the exchange's
/// thread, before the call they belong to is counted as over.
class RecordingObserver : public ExchangeObserver {
public:
    std::function<void()> onRequestSent;
    std::function<void()> onResponse;
    std::function<bool()> onData;
    std::function<void()> onSent;
    std::function<void()> onComplete;

    int requestsSent = 0;
    std::vector<HTTPResponse> responses;
    std::string body;
    std::vector<std::pair<std::int64_t, std::int64_t>> sent;
    int completions = 0;
    int callsAfterEnd = 0;
    std::optional<Error> error;
    std::thread::id thread;

    void didSendRequest() override;
    void didReceiveResponse(HTTPResponse response) override;
    bool didReceiveData(std::string_view bytes) override;
    void didSendBody(std::int64_t sentBytes, std::int64_t total) override;
    void didComplete(std::optional<Error> failure) override;

    /// False when the exchange has not completed in that time.
    bool wait(std::chrono::milliseconds limit = timeLimit);
    bool hasCompleted();
    /// The status of the answer; 0 when there was none.
    int status() const { return responses.empty() ? 0 : responses.front().statusCode; }

private:
    void countCall();

    std::mutex _mutex;
    std::condition_variable _changed;
    bool _over = false;
};

} // namespace KeloAPI::testing
