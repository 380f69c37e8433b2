#include "RecordingObserver.hpp"

namespace KeloAPI::testing {

void RecordingObserver::countCall() {
    const std::lock_guard lock(_mutex);
    callsAfterEnd += _over ? 1 : 0;
}

void RecordingObserver::didSendRequest() {
    countCall();
    ++requestsSent;
    if (onRequestSent) {
        onRequestSent();
    }
}

void RecordingObserver::didReceiveResponse(HTTPResponse response) {
    countCall();
    thread = std::this_thread::get_id();
    responses.push_back(std::move(response));
    if (onResponse) {
        onResponse();
    }
}

bool RecordingObserver::didReceiveData(std::string_view bytes) {
    countCall();
    body += bytes;
    return onData ? onData() : true;
}

void RecordingObserver::didSendBody(std::int64_t sentBytes, std::int64_t total) {
    countCall();
    sent.emplace_back(sentBytes, total);
    if (onSent) {
        onSent();
    }
}

void RecordingObserver::didComplete(std::optional<Error> failure) {
    countCall();
    thread = std::this_thread::get_id();
    error = std::move(failure);
    if (onComplete) {
        onComplete();
    }
    // Told under the lock: the waiting test may destroy this object at once.
    const std::lock_guard lock(_mutex);
    ++completions;
    _over = true;
    _changed.notify_all();
}

bool RecordingObserver::wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(_mutex);
    return _changed.wait_for(lock, limit, [this] { return _over; });
}

bool RecordingObserver::hasCompleted() {
    const std::lock_guard lock(_mutex);
    return _over;
}

} // namespace KeloAPI::testing
