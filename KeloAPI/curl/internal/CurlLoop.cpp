#include <KeloAPI/curl/internal/CurlErrors.hpp>
#include <KeloAPI/curl/internal/CurlLoop.hpp>
#include <KeloAPI/curl/internal/Libraries.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>
#include <KeloAPI/queues/internal/SignalShield.hpp>

#include <openssl/crypto.h>
#include <pthread.h>

#include <algorithm>
#include <climits>
#include <system_error>

namespace KeloAPI {

CurlLoop::CurlLoop(TrustStore trust, std::string name, Limits limits)
    : _trust(std::move(trust))
    , _name(std::move(name))
    , _limits(limits) {}

CurlLoop::~CurlLoop() {
    curl_multi_cleanup(_multi); // of a lane that had no thread
}

void CurlLoop::open() {
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
                      static_cast<long>(_limits.connectionsPerHost));
    // This counts connections in use, too: one that comes to rest while there are more is closed.
    curl_multi_setopt(_multi, CURLMOPT_MAXCONNECTS,
                      static_cast<long>(std::max<std::size_t>(_limits.idleConnections, 1)));
    const SignalShield shield;
    _thread = std::thread([self = shared_from_this()] { self->run(); });
}

bool CurlLoop::start(std::shared_ptr<CurlExchange> exchange) {
    const std::lock_guard lock(_mutex);
    if (_stopped) {
        return false;
    }
    _commands.starts.push_back(std::move(exchange));
    // The lane's own thread looks for commands before it sleeps.
    if (!isCurrentThread()) {
        curl_multi_wakeup(_multi);
    }
    return true;
}

void CurlLoop::cancel(std::shared_ptr<CurlExchange> exchange) {
    const std::lock_guard lock(_mutex);
    if (!_stopped) {
        _commands.cancels.push_back(std::move(exchange));
        curl_multi_wakeup(_multi);
    }
}

void CurlLoop::stop() {
    const std::lock_guard lock(_mutex);
    if (!_stopped) {
        _stopped = true;
        _commands.stop = true;
        curl_multi_wakeup(_multi);
    }
}

void CurlLoop::wake() {
    const std::lock_guard lock(_mutex);
    if (_multi != nullptr) {
        curl_multi_wakeup(_multi);
    }
}

void CurlLoop::run() {
    pthread_setname_np(pthread_self(), _name.c_str());
    const ExitGuard::Member member([this] { wake(); });
    ExitGuard::parkIfExiting();
    _cookies = curl_share_init();
    curl_share_setopt(_cookies, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    loop();
    cleanUp();
}

void CurlLoop::loop() {
    while (true) {
        if (!carryOut(takeCommands())) {
            return;
        }
        sendWaiting();
        int running = 0;
        curl_multi_perform(_multi, &running);
        useTheWait();
        finishDone();
        finishOverdue();
        ExitGuard::parkIfExiting();
        if (hasStarts() || hasSendable()) {
            continue; // what has just ended is followed by another
        }
        _ended.clear();
        const CURLMcode polled = curl_multi_poll(_multi, nullptr, 0, pollTimeout(), nullptr);
        if (polled != CURLM_OK) {
            pause();
        }
        ExitGuard::parkIfExiting();
    }
}

/// False when the lane is to end.
bool CurlLoop::carryOut(const Commands& commands) {
    for (const auto& exchange : commands.starts) {
        enqueue(exchange);
    }
    for (const auto& exchange : commands.cancels) {
        if (const auto found = _transfers.find(exchange.get()); found != _transfers.end()) {
            finish(*found->second, {});
        }
    }
    if (commands.stop) {
        finishAll(httpError(HTTPErrorCode::Cancelled, "the transport has gone"));
    }
    return !commands.stop;
}

/// For what need not come before the next request, and can be done while the server answers it.
void CurlLoop::useTheWait() {
    for (CurlTransfer* transfer : std::exchange(_begun, {})) {
        if (!transfer->tellWhenSent()) {
            finish(*transfer, transfer->outcome(CURLE_OK));
        } else if (!transfer->isSent()) {
            _begun.push_back(transfer);
        }
    }
    ExitGuard::parkIfExiting();
    _ended.clear();
}

CurlLoop::Commands CurlLoop::takeCommands() {
    const std::lock_guard lock(_mutex);
    return std::exchange(_commands, {});
}

bool CurlLoop::hasStarts() {
    const std::lock_guard lock(_mutex);
    return !_commands.starts.empty();
}

void CurlLoop::enqueue(const std::shared_ptr<CurlExchange>& exchange) {
    if (exchange->isCancelled()) {
        exchange->complete({});
        return;
    }
    if (_trust.rejectsEveryServer()) {
        exchange->complete(
            httpError(HTTPErrorCode::ServerTrust, "no certificate is pinned for this host"));
        return;
    }
    CurlOrigin& origin = originOf(*exchange->request().url);
    auto transfer = std::make_unique<CurlTransfer>(exchange, origin, _sockets);
    transfer->listedDeadline = transfer->deadline();
    origin.waiting.emplace(transfer->order(), transfer.get());
    _deadlines.emplace(transfer->listedDeadline, transfer.get());
    _transfers.emplace(exchange.get(), std::move(transfer));
}

CurlOrigin& CurlLoop::originOf(const URL& url) {
    const std::string scheme = url.scheme();
    CurlOrigin& origin =
        _origins[scheme + "://" + url.host() + ':' + std::to_string(url.port().value_or(0))];
    if (scheme == "http") {
        origin.protocol = CurlOrigin::Protocol::Serial;
    }
    return origin;
}

/// Hands libcurl what waits, as far as there is room.
void CurlLoop::sendWaiting() {
    for (auto entry = _origins.begin(); entry != _origins.end();) {
        CurlOrigin& origin = entry->second;
        for (std::size_t room = origin.room(_limits.connectionsPerHost);
             room > 0 && !origin.waiting.empty(); --room) {
            send(*origin.waiting.begin()->second);
        }
        const bool isIdle = origin.inFlight == 0 && origin.waiting.empty();
        entry = isIdle ? _origins.erase(entry) : std::next(entry);
    }
}

void CurlLoop::send(CurlTransfer& transfer) {
    CurlOrigin& origin = transfer.origin();
    if (!transfer.open(_trust, _cookies) ||
        curl_multi_add_handle(_multi, transfer.easy()) != CURLM_OK) {
        finish(transfer, transfer.outcome(CURLE_OUT_OF_MEMORY));
        return;
    }
    origin.waiting.erase(transfer.order());
    ++origin.inFlight;
    _begun.push_back(&transfer);
}

bool CurlLoop::hasSendable() const {
    return std::any_of(_origins.begin(), _origins.end(), [this](const auto& entry) {
        const CurlOrigin& origin = entry.second;
        return !origin.waiting.empty() && origin.room(_limits.connectionsPerHost) > 0;
    });
}

void CurlLoop::finishDone() {
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
void CurlLoop::sendAgain(CurlTransfer& transfer) {
    curl_multi_remove_handle(_multi, transfer.easy());
    if (curl_multi_add_handle(_multi, transfer.easy()) != CURLM_OK) {
        finish(transfer, transfer.outcome(CURLE_OUT_OF_MEMORY));
    }
}

void CurlLoop::finishOverdue() {
    const auto now = CurlTransfer::Clock::now();
    while (!_deadlines.empty() && _deadlines.begin()->first <= now) {
        CurlTransfer& transfer = *_deadlines.begin()->second;
        if (transfer.deadline() > now) {
            // Bytes have moved since: the list is put right only when it matters.
            _deadlines.erase(_deadlines.begin());
            transfer.listedDeadline = transfer.deadline();
            _deadlines.emplace(transfer.listedDeadline, &transfer);
            continue;
        }
        if (transfer.easy() != nullptr) {
            transfer.distrustConnection();
        }
        CurlTransfer::Outcome outcome;
        outcome.error = httpError(HTTPErrorCode::TimedOut, "the request timed out");
        finish(transfer, std::move(outcome));
    }
}

/// libcurl is done with the transfer before the exchange hears of it: what follows is the
/// observer's. What is left of it goes when that has been sent.
void CurlLoop::finish(CurlTransfer& transfer, CurlTransfer::Outcome outcome) {
    const std::shared_ptr<CurlExchange> exchange = transfer.exchange();
    if (CurlOrigin& origin = transfer.origin(); origin.waiting.erase(transfer.order()) == 0) {
        curl_multi_remove_handle(_multi, transfer.easy());
        --origin.inFlight;
    }
    _deadlines.erase({transfer.listedDeadline, &transfer});
    std::erase(_begun, &transfer);
    _ended.push_back(std::move(_transfers.extract(exchange.get()).mapped()));
    CurlTransfer::conclude(*exchange, std::move(outcome));
}

void CurlLoop::finishAll(const Error& error) {
    while (!_transfers.empty()) {
        CurlTransfer::Outcome outcome;
        outcome.error = error;
        finish(*_transfers.begin()->second, std::move(outcome));
    }
}

int CurlLoop::pollTimeout() const {
    if (_deadlines.empty()) {
        return INT_MAX;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(_deadlines.begin()->first -
                                                                   CurlTransfer::Clock::now());
    // libcurl sometimes does not wake a transfer whose HTTP/2 stream a GOAWAY has ended, as long as
    // the server keeps the connection open. A look each second ends it long before its time-out.
    constexpr std::int64_t maxPause = 1000;
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, maxPause));
}

/// In place of a poll that failed, which says nothing of any transfer: what has come in meanwhile
/// is taken up at the next turn, and what cannot be served any more times out.
void CurlLoop::pause() const {
    constexpr int longest = 10; // in milliseconds
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(pollTimeout(), longest)));
}

void CurlLoop::cleanUp() {
    _ended.clear();
    CURLM* multi = nullptr;
    {
        const std::lock_guard lock(_mutex);
        std::swap(multi, _multi);
    }
    curl_multi_cleanup(multi);
    curl_share_cleanup(_cookies);
    // Otherwise the thread would do it after the process's exit has ceased to wait for it.
    OPENSSL_thread_stop();
}

} // namespace KeloAPI
