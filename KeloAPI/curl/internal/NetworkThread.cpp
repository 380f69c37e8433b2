#include <KeloAPI/base/internal/System.hpp>
#include <KeloAPI/curl/internal/CurlErrors.hpp>
#include <KeloAPI/curl/internal/Libraries.hpp>
#include <KeloAPI/curl/internal/NetworkThread.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>
#include <KeloAPI/queues/internal/SignalShield.hpp>

#include <openssl/crypto.h>

#include <algorithm>
#include <climits>
#include <system_error>

namespace KeloAPI {

NetworkThread::NetworkThread(std::string name, const ServerTrustPolicyManager& trust,
                             TransportSettings settings, std::size_t connectionsPerHost)
    : _name(std::move(name))
    , _trust(trust)
    , _settings(std::move(settings))
    , _connectionsPerHost(connectionsPerHost) {}

NetworkThread::~NetworkThread() {
    curl_multi_cleanup(_multi); // if the thread never started
}

void NetworkThread::open() {
    initialiseNetworkLibraries();
    _multi = curl_multi_init();
    // Without the means to be woken the thread would sleep through everything.
    if (_multi == nullptr || curl_multi_wakeup(_multi) != CURLM_OK) {
        curl_multi_cleanup(_multi);
        _multi = nullptr;
        throw std::system_error(std::make_error_code(std::errc::too_many_files_open));
    }
    // Transfers wait here, not in libcurl, whose one waiting list is for all hosts together. This
    // is for servers that allow fewer HTTP/2 streams than libcurl expects.
    curl_multi_setopt(_multi, CURLMOPT_MAX_HOST_CONNECTIONS,
                      static_cast<long>(_connectionsPerHost));
    // This counts connections in use, too: one that comes to rest while there are more is closed.
    curl_multi_setopt(_multi, CURLMOPT_MAXCONNECTS,
                      static_cast<long>(std::max<std::size_t>(_settings.maxIdleConnections, 1)));
    const SignalShield shield;
    _thread = std::thread([self = shared_from_this()] { self->run(); });
}

void NetworkThread::start(std::shared_ptr<CurlTransfer> transfer) {
    const std::lock_guard lock(_mutex);
    _commands.starts.push_back(std::move(transfer));
    if (_resting) {
        _resting = false;
        curl_multi_wakeup(_multi);
    }
}

void NetworkThread::cancel(std::shared_ptr<CurlTransfer> transfer) {
    const std::lock_guard lock(_mutex);
    if (!_stopped) {
        _commands.cancels.push_back(std::move(transfer));
        curl_multi_wakeup(_multi);
    }
}

void NetworkThread::stop() {
    const std::lock_guard lock(_mutex);
    if (!_stopped) {
        _stopped = true;
        _commands.stop = true;
        curl_multi_wakeup(_multi);
    }
}

void NetworkThread::wake() {
    const std::lock_guard lock(_mutex);
    if (_multi != nullptr) {
        curl_multi_wakeup(_multi);
    }
}

void NetworkThread::run() {
    System::nameThread(_name);
    const ExitGuard::Member member([this] { wake(); });
    ExitGuard::parkIfExiting();
    _shared.cookies = curl_share_init();
    curl_share_setopt(_shared.cookies, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    loop();
    cleanUp();
}

void NetworkThread::loop() {
    while (true) {
        if (!carryOut(takeCommands())) {
            return;
        }
        resumePaused();
        sendWaiting();
        // What arrives while transfers are ended below, however long that takes, breaks the
        // silence.
        const auto now = CurlTransfer::Clock::now();
        int running = 0;
        curl_multi_perform(_multi, &running);
        finishDone();
        finishOverdue(now);
        ExitGuard::parkIfExiting();
        if (hasSendable() || !restIfIdle()) {
            continue; // what has just ended is followed by another
        }
        const CURLMcode polled = curl_multi_poll(_multi, nullptr, 0, pollTimeout(), nullptr);
        if (polled != CURLM_OK) {
            pause();
        }
        ExitGuard::parkIfExiting();
    }
}

/// False when the thread is to end.
bool NetworkThread::carryOut(const Commands& commands) {
    for (const auto& transfer : commands.starts) {
        enqueue(transfer);
    }
    for (const auto& transfer : commands.cancels) {
        if (_transfers.contains(transfer)) {
            finish(*transfer, {});
        }
    }
    if (commands.stop) {
        finishAll(httpError(HTTPErrorCode::Cancelled, "the transport has gone"));
    }
    return !commands.stop;
}

NetworkThread::Commands NetworkThread::takeCommands() {
    const std::lock_guard lock(_mutex);
    _resting = false;
    return std::exchange(_commands, {});
}

/// True where no command waits; whoever sends something from then on wakes the thread.
bool NetworkThread::restIfIdle() {
    const std::lock_guard lock(_mutex);
    _resting = _commands.starts.empty();
    return _resting;
}

/// Lets the transfer's next request wait for its turn.
void NetworkThread::enqueue(const std::shared_ptr<CurlTransfer>& transfer) {
    if (transfer->isCancelled()) {
        transfer->complete({});
        return;
    }
    CurlOrigin& origin = originOf(*transfer->request().url);
    if (origin.trust->rejectsEveryServer()) {
        transfer->complete(
            httpError(HTTPErrorCode::ServerTrust, "no certificate is pinned for this host"));
        return;
    }
    transfer->wait(origin);
    origin.waiting.emplace(transfer->order(), transfer.get());
    list(*transfer);
    _transfers.insert(transfer);
}

const TrustStore& NetworkThread::trustFor(const URL& url) {
    const ServerTrustPolicy* policy = _trust.policyFor(url);
    return _trustStores.try_emplace(policy, policy).first->second;
}

CurlOrigin& NetworkThread::originOf(const URL& url) {
    const std::string scheme = url.scheme();
    CurlOrigin& origin =
        _origins[scheme + "://" + url.host() + ':' + std::to_string(url.port().value_or(0))];
    if (origin.trust == nullptr) {
        origin.trust = &trustFor(url);
        origin.protocol =
            scheme == "http" ? CurlOrigin::Protocol::Serial : CurlOrigin::Protocol::Unknown;
    }
    return origin;
}

/// Hands libcurl what waits, as far as there is room.
void NetworkThread::sendWaiting() {
    for (auto entry = _origins.begin(); entry != _origins.end();) {
        CurlOrigin& origin = entry->second;
        for (std::size_t room = origin.room(_connectionsPerHost);
             room > 0 && !origin.waiting.empty(); --room) {
            send(*origin.waiting.begin()->second);
        }
        const bool isIdle = origin.inFlight == 0 && origin.waiting.empty();
        entry = isIdle ? _origins.erase(entry) : std::next(entry);
    }
}

void NetworkThread::send(CurlTransfer& transfer) {
    if (!transfer.arm(_shared) || curl_multi_add_handle(_multi, transfer.easy()) != CURLM_OK) {
        finish(transfer, transfer.outcome(CURLE_OUT_OF_MEMORY));
        return;
    }
    CurlOrigin& origin = transfer.origin();
    origin.waiting.erase(transfer.order());
    ++origin.inFlight;
    transfer.stage = CurlTransfer::Stage::InFlight;
    list(transfer);
}

/// Puts the transfer's deadline into the list, or right there.
void NetworkThread::list(CurlTransfer& transfer) {
    _deadlines.erase({transfer.listedDeadline, &transfer});
    transfer.listedDeadline = transfer.deadline();
    _deadlines.emplace(transfer.listedDeadline, &transfer);
}

bool NetworkThread::hasSendable() const {
    return std::any_of(_origins.begin(), _origins.end(), [this](const auto& entry) {
        const CurlOrigin& origin = entry.second;
        return !origin.waiting.empty() && origin.room(_connectionsPerHost) > 0;
    });
}

void NetworkThread::finishDone() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(_multi, &left)) {
        if (message->msg == CURLMSG_DONE) {
            CurlTransfer& transfer = CurlTransfer::of(message->easy_handle);
            if (transfer.takeRefusal()) {
                sendAgain(transfer);
            } else {
                finish(transfer, transfer.outcome(message->data.result));
            }
        }
    }
}

/// On another connection: each refused one has been closed, so there is an end to it.
void NetworkThread::sendAgain(CurlTransfer& transfer) {
    curl_multi_remove_handle(_multi, transfer.easy());
    if (curl_multi_add_handle(_multi, transfer.easy()) != CURLM_OK) {
        finish(transfer, transfer.outcome(CURLE_OUT_OF_MEMORY));
    }
}

void NetworkThread::finishOverdue(CurlTransfer::Clock::time_point now) {
    while (!_deadlines.empty() && _deadlines.begin()->first <= now) {
        CurlTransfer& transfer = *_deadlines.begin()->second;
        if (transfer.deadline() > now) {
            // Bytes have moved since: the list is put right only when it matters.
            list(transfer);
            continue;
        }
        transfer.distrustConnection();
        finish(transfer, transfer.overdue());
    }
}

/// libcurl is done with the transfer before its observer hears of the end.
void NetworkThread::finish(CurlTransfer& transfer, CurlTransfer::Outcome outcome) {
    const std::shared_ptr<CurlTransfer> kept = transfer.shared_from_this();
    switch (transfer.stage) {
    case CurlTransfer::Stage::Waiting:
        transfer.origin().waiting.erase(transfer.order());
        break;
    case CurlTransfer::Stage::InFlight:
        curl_multi_remove_handle(_multi, transfer.easy());
        --transfer.origin().inFlight;
        break;
    case CurlTransfer::Stage::Pausing:
        _pauses.erase({transfer.listedDeadline, &transfer});
        break;
    }
    _deadlines.erase({transfer.listedDeadline, &transfer});
    _transfers.erase(kept);
    switch (transfer.goOn(std::move(outcome))) {
    case CurlTransfer::Next::Nothing:
        break;
    case CurlTransfer::Next::Request:
        enqueue(kept);
        break;
    case CurlTransfer::Next::Pause:
        _pauses.emplace(transfer.listedDeadline, &transfer);
        _transfers.insert(kept);
        break;
    }
}

void NetworkThread::resumePaused() {
    const auto now = CurlTransfer::Clock::now();
    while (!_pauses.empty() && _pauses.begin()->first <= now) {
        const auto transfer = _pauses.begin()->second->shared_from_this();
        _pauses.erase(_pauses.begin());
        _transfers.erase(transfer);
        enqueue(transfer);
    }
}

void NetworkThread::finishAll(const Error& error) {
    while (!_transfers.empty()) {
        CurlTransfer::Outcome outcome;
        outcome.error = error;
        finish(**_transfers.begin(), std::move(outcome));
    }
}

int NetworkThread::pollTimeout() const {
    auto next = CurlTransfer::Clock::time_point::max();
    for (const auto* times : {&_deadlines, &_pauses}) {
        next = times->empty() ? next : std::min(next, times->begin()->first);
    }
    if (next == CurlTransfer::Clock::time_point::max()) {
        return INT_MAX;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(next - CurlTransfer::Clock::now());
    // libcurl sometimes does not wake a transfer whose HTTP/2 stream a GOAWAY has ended, as long as
    // the server keeps the connection open. A look each second ends it long before its time-out.
    constexpr std::int64_t maxPause = 1000;
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, maxPause));
}

/// In place of a poll that failed, which says nothing of any transfer: what has come in meanwhile
/// is taken up at the next turn, and what cannot be served any more times out.
void NetworkThread::pause() const {
    constexpr int maxPause = 10; // in milliseconds
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(pollTimeout(), maxPause)));
}

void NetworkThread::cleanUp() {
    CURLM* multi = nullptr;
    {
        const std::lock_guard lock(_mutex);
        std::swap(multi, _multi);
    }
    curl_multi_cleanup(multi);
    _shared.easyHandles.clear();
    curl_share_cleanup(_shared.cookies);
    // Otherwise the thread would do it after the process's exit has ceased to wait for it.
    OPENSSL_thread_stop();
}

} // namespace KeloAPI
